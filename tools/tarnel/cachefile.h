#pragma once

#include "storage/connection.h"
#include "tools/tarnel/place.h"

#include <SQLiteCpp/Database.h>

#include <optional>

namespace tool {

/// A cache that is open for reading, with nothing of it touched: neither the file, nor what lies beside it, nor their
/// times; and no client has to wait for a reader here.
///
/// How that is done depends on what lies there, and on who has it locked:
///
/// - Nobody has it locked, and it is complete in itself, as an exit leaves it: it is read in place, as a file that
///   cannot change. SQLite takes no locks then and makes nothing beside it. A client may well be launched meanwhile;
///   `assertUnchanged` notices what that writes.
/// - A client has it locked, as each does that writes a log: SQLite's backup copies it through a connection that reads
///   as the client's own readers do, so that the copy is of one state, while the client writes on. That lasts as long
///   as a copy takes: a look of minutes would keep the client's log from being folded. What clients share about the log
///   (`-shm`) is only read: SQLite would write into it, and set its owner, if it were allowed to.
/// - Nobody has it locked, and there is a log, or a journal: a client was killed. To read it is to recover it, which
///   writes. File and log are copied as they are to a private place, and recovered there; the original may lie in a
///   directory that cannot be written, and it still shows what the client has left.
///
/// Of a client whose file system has no memory to share, and so no log, the file is locked during its writes alone. It
/// is then read in one of these ways as it is met.
class CacheFile
{
public:
    enum class Reading { InPlace, LiveCopy, RecoveredCopy, Live };
    /// A short look reads a file that a client has open without a copy. It must be over in milliseconds.
    enum class Look { Long, Short };

    explicit CacheFile(const std::filesystem::path &path, Look look = Look::Long);

    [[nodiscard]] const Place &place() const { return m_place; }
    [[nodiscard]] Reading reading() const { return m_reading; }

    /// SQLite's code for the first read: what is no database can be looked at, too.
    [[nodiscard]] int code() const { return m_code; }
    /// Throws if a client could not use the file: for whoever wants to read records.
    void requireSound();

    [[nodiscard]] tarnelLib::controller::Connection &connection() { return m_connection; }
    [[nodiscard]] SQLite::Database &database() { return *m_database; }

    /// Throws if the file was written to while it was read in place: what was read may be of two states.
    void assertUnchanged() const;

private:
    bool open(Look look);
    bool openInPlace();
    bool openLive(Look look);
    bool openCopyOfFiles();
    void use(SQLite::Database &&database);

    Place m_place;
    Reading m_reading = Reading::InPlace;
    int m_code = SQLITE_OK;
    std::optional<SQLite::Database> m_database;
    tarnelLib::controller::Connection m_connection;
};

} // namespace tool
