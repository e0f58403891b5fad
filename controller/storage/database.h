#pragma once

#include "controller/entities/user.h"
#include "controller/storage/tablemodel.h"

#include <QObject>
#include <QString>

#include <vector>

namespace tarnelLib::controller
{

/// The storage of the cache, as the `Controller` sees it. Every operation returns true on success, has logged its
/// failure otherwise, and leaves nothing half-written; a record that is not there is a success that hands back nothing.
class Database : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] virtual bool isDatabaseFileExists(const QString &path) = 0;
    /// Makes a new database with all tables.
    [[nodiscard]] virtual bool restoreDatabase(const QString &path) = 0;
    [[nodiscard]] virtual bool openDatabase(const QString &path) = 0;
    /// Deletes the database and opens an empty one in its place, without tables.
    [[nodiscard]] virtual bool recreateDatabase(const QString &path) = 0;
    [[nodiscard]] virtual bool isDbVersionActual() = 0;
    [[nodiscard]] virtual bool isTablesValid() = 0;

    /// Brings what was written since the last call into the main file, so that it is complete without side files.
    virtual void foldLog() = 0;

    [[nodiscard]] virtual bool add(const std::vector<Locale> &locales) = 0;
    [[nodiscard]] virtual bool get(std::vector<Locale> &locales) = 0;
    [[nodiscard]] virtual bool get(std::vector<Locale> &locales, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Locale> &locale, quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<Domain> &domains) = 0;
    [[nodiscard]] virtual bool get(std::vector<Domain> &domains) = 0;
    [[nodiscard]] virtual bool get(std::vector<Domain> &domains, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Domain> &domain, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Domain> &domain) = 0;
    [[nodiscard]] virtual bool deleteDomain(quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<User> &users) = 0;
    [[nodiscard]] virtual bool get(std::vector<User> &users) = 0;
    [[nodiscard]] virtual bool get(std::vector<User> &users, const ModelField &field, std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<User> &user, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<User> &user) = 0;
    [[nodiscard]] virtual bool deleteUser(quint32 id) = 0;

Q_SIGNALS:
    /// Something was written and is not yet in the main file; not repeated until `foldLog`.
    void logGrew();
};

} // namespace tarnelLib::controller
