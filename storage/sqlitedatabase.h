#pragma once

#include "storage/readmark.h"
#include "storage/turns.h"
#include "storage/writeconnection.h"

#include <QSqlDatabase>
#include <QString>

#include <memory>

namespace tarnelLib::controller {

/// The SQLite file: whether it is there and what can be made of it, the connection that writes, which is Qt's, and
/// those that read beside it. Rows go through SQLite's native handles.
class SQLiteDatabase
{
public:
    /// `onLogGrew` is called when something was written and is not yet in the main file, and not again until the log is
    /// folded; `onStateHeld` when `letGoOfState` is to follow soon.
    SQLiteDatabase(std::function<void()> onLogGrew, std::function<void()> onStateHeld)
        : m_mark(std::move(onStateHeld)), m_writer(std::move(onLogGrew), m_mark)
    {
    }
    SQLiteDatabase(const SQLiteDatabase &) = delete;
    SQLiteDatabase &operator=(const SQLiteDatabase &) = delete;
    ~SQLiteDatabase();

    // The launch, before any call.

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
    /// Lets other processes empty the log, which frequent reads keep them from.
    void letGoOfState() noexcept { m_mark.release(); }
    /// Lets the calls that have a turn end, and throws `Turns::Closed` at all others.
    void close() noexcept;

private:
    struct Reader : Connection {
        unsigned int reads = 0;
    };

    bool useConnection();
    /// Opens the connections that read, as far as there are descriptors and memory for them: without them reads wait
    /// for their turn with the writes. A file that they cannot read must not be judged.
    void openReaders();
    void closeDatabase();
    void abandonDatabase(const QString &path);

    QString m_name;
    QSqlDatabase m_database;
    ReadMark m_mark;
    WriteConnection m_writer;
    Turns m_writerTurns{1};
    std::vector<std::unique_ptr<Reader>> m_readers;
    Turns m_readerTurns;
    bool m_isFileNew = false;        ///< This launch has made it.
    bool m_isContentUnknown = false; ///< A failure said nothing about the file, which must not be judged by it.
};

} // namespace tarnelLib::controller
