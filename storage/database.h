#pragma once

#include "entities/event.h"
#include "entities/organization.h"
#include "entities/site.h"
#include "storage/tablemodel.h"

#include <QObject>
#include <QString>

#include <vector>

namespace tarnelLib::controller {

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

    [[nodiscard]] virtual bool add(const std::vector<Organization> &organizations) = 0;
    [[nodiscard]] virtual bool get(std::vector<Organization> &organizations) = 0;
    [[nodiscard]] virtual bool get(std::vector<Organization> &organizations, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Organization> &organization, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Organization> &organization) = 0;
    [[nodiscard]] virtual bool deleteOrganization(quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<Contractor> &contractors) = 0;
    [[nodiscard]] virtual bool get(std::vector<Contractor> &contractors) = 0;
    [[nodiscard]] virtual bool get(std::vector<Contractor> &contractors, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Contractor> &contractor, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Contractor> &contractor) = 0;
    [[nodiscard]] virtual bool deleteContractor(quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<Contract> &contracts) = 0;
    [[nodiscard]] virtual bool get(std::vector<Contract> &contracts) = 0;
    [[nodiscard]] virtual bool get(std::vector<Contract> &contracts, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Contract> &contract, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Contract> &contract) = 0;
    [[nodiscard]] virtual bool deleteContract(quint32 id) = 0;

    [[nodiscard]] virtual bool get(std::vector<Zone> &zones, quint32 device) = 0;
    [[nodiscard]] virtual bool get(std::vector<Zone> &zones, quint32 device, quint32 section) = 0;
    [[nodiscard]] virtual bool get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value,
                                   quint32 device) = 0;
    [[nodiscard]] virtual bool get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value,
                                   quint32 device, quint32 section) = 0;
    [[nodiscard]] virtual bool get(std::optional<Zone> &zone, quint32 device, quint32 section, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Zone> &zone, quint32 device, quint32 section) = 0;
    [[nodiscard]] virtual bool deleteZone(quint32 device, quint32 section, quint32 id) = 0;

    [[nodiscard]] virtual bool get(std::vector<Section> &sections, quint32 device) = 0;
    [[nodiscard]] virtual bool get(std::vector<Section> &sections, const ModelField &field, std::u16string_view value,
                                   quint32 device) = 0;
    [[nodiscard]] virtual bool get(std::optional<Section> &section, quint32 device, quint32 id) = 0;
    [[nodiscard]] virtual bool isSectionExists(bool &isExists, quint32 device, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Section> &section, quint32 device) = 0;
    [[nodiscard]] virtual bool deleteSection(quint32 device, quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<Device> &devices) = 0;
    /// Hands the device back as it is stored.
    [[nodiscard]] virtual bool add(std::optional<Device> &device) = 0;
    [[nodiscard]] virtual bool get(std::vector<Device> &devices) = 0;
    [[nodiscard]] virtual bool get(std::vector<Device> &devices, const ModelField &field,
                                   std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Device> &device, quint32 id) = 0;
    [[nodiscard]] virtual bool isDeviceExists(bool &isExists, quint32 id) = 0;
    /// Changes the configuration version alone.
    [[nodiscard]] virtual bool update(std::optional<Device> &device) = 0;
    [[nodiscard]] virtual bool deleteDevice(quint32 id) = 0;

    [[nodiscard]] virtual bool add(const std::vector<Site> &sites) = 0;
    [[nodiscard]] virtual bool get(std::vector<Site> &sites) = 0;
    [[nodiscard]] virtual bool get(std::vector<Site> &sites, const ModelField &field, std::u16string_view value) = 0;
    [[nodiscard]] virtual bool get(std::optional<Site> &site, quint32 id) = 0;
    [[nodiscard]] virtual bool isSiteExists(bool &isExists, quint32 id) = 0;
    [[nodiscard]] virtual bool getSiteFields(std::optional<Text> &name, std::optional<Text> &address, quint32 id) = 0;
    [[nodiscard]] virtual bool update(std::optional<Site> &site) = 0;
    [[nodiscard]] virtual bool deleteSite(quint32 id) = 0;

    /// Hands back those of the events whose device is stored, in the order of their identifiers.
    [[nodiscard]] virtual bool add(std::vector<Event> &events) = 0;
    /// Hands the event back as it is stored.
    [[nodiscard]] virtual bool add(std::optional<Event> &event) = 0;
    /// The events of known devices in a range of time, both ends included.
    [[nodiscard]] virtual bool get(std::vector<Event> &events, quint32 from, quint32 to) = 0;
    /// The events of known devices whose affect flag is set.
    [[nodiscard]] virtual bool get(std::vector<Event> &events) = 0;
    [[nodiscard]] virtual bool isEventExists(bool &isExists, quint32 id) = 0;
    [[nodiscard]] virtual bool removeAffectFlag(std::optional<Event> &event, quint32 id) = 0;
    [[nodiscard]] virtual bool clearEventsBeforeDateExceptAffects(quint32 date) = 0;

    [[nodiscard]] virtual bool setServerIp(std::u16string_view address) = 0;
    /// The address is absent if none was ever stored.
    [[nodiscard]] virtual bool getServerIp(std::optional<Text> &address) = 0;
    [[nodiscard]] virtual bool clearAll() = 0;
    [[nodiscard]] virtual bool clearAllExceptEvents() = 0;

Q_SIGNALS:
    /// Something was written and is not yet in the main file; not repeated until `foldLog`.
    void logGrew();
};

} // namespace tarnelLib::controller
