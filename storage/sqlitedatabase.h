#pragma once

#include "storage/turns.h"
#include "storage/writeconnection.h"

#include <QObject>
#include <QSqlDatabase>
#include <QString>

#include <memory>

namespace tarnelLib::controller {

/// The SQLite file: whether it is there and what can be made of it, the connection that writes, which is Qt's, and
/// those that read beside it. Rows go through SQLite's native handles.
class SQLiteDatabase : public QObject
{
    Q_OBJECT

public:
    SQLiteDatabase() { m_writerTurns.open(1); }
    SQLiteDatabase(const SQLiteDatabase &) = delete;
    SQLiteDatabase &operator=(const SQLiteDatabase &) = delete;
    ~SQLiteDatabase() override;

    // The launch, before any call.

    [[nodiscard]] static bool isDatabaseFileExists(const QString &path);
    /// Makes a new database with all tables.
    [[nodiscard]] bool restoreDatabase(const QString &path);
    [[nodiscard]] bool openDatabase(const QString &path);
    /// Deletes the database and opens an empty one in its place, without tables.
    [[nodiscard]] bool recreateDatabase(const QString &path);
    [[nodiscard]] bool isDbVersionActual();
    [[nodiscard]] bool isTablesValid();
    // The calls.

    /// A turn at the connection that writes, for every call that may write.
    [[nodiscard]] Turn<WriteConnection> write();
    /// A turn at a connection for a call that only reads.
    [[nodiscard]] Turn<Connection> read();
    /// Lets the calls that have a turn end, and throws `Turns::Closed` at all others.
    void close() noexcept;

    /// Something was written and is not yet in the main file; not repeated until the log is folded.
    Q_SIGNAL void logGrew();

private:
    bool useConnection();
    /// Opens the connections that read; without them reads wait for their turn with the writes. False if the disk
    /// fails.
    bool openReaders();
    void closeDatabase();
    void abandonDatabase(const QString &path);
    bool removeDb();

    QString m_name;
    QSqlDatabase m_database;
    WriteConnection m_writer;
    Turns m_writerTurns;
    std::vector<std::unique_ptr<Connection>> m_readers;
    Turns m_readerTurns;
    bool m_isFileNew = false;        ///< This launch has made it.
    bool m_isContentUnknown = false; ///< A failure said nothing about the file, which must not be judged by it.
};

} // namespace tarnelLib::controller
