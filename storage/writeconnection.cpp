#include "storage/writeconnection.h"

namespace tarnelLib::controller {

namespace {

// How long a checkpoint that needs the log for itself waits for the reads in progress: lists take longer than a commit
// may. It holds up writes alone, as a read that begins meanwhile finds everything in the main file.
constexpr int restartTimeoutMs = 20;
constexpr int foldTimeoutMs = 100;

/// From this size on a commit copies what it can from the log into the main file, as SQLite does by itself.
constexpr int copiedLogPages = 1000;

/// From this size on a commit makes the log start again from its beginning, which reads that never rest keep off
/// otherwise: the log would grow without end. In pages of 4 KiB.
constexpr int restartedLogPages = 4096;

/// From this size on the commit waits for that: only reads that were in progress before it can hold it up.
constexpr int greatestLogPages = 16384;

} // namespace

void WriteConnection::attach(sqlite3 *connection)
{
    QueryPreparer::attach(connection);
    configure();
    // A commit is on the disk when it returns. Without a log that takes more than FULL: a journal whose removal the
    // disk has not noted yet would undo the commit after a power cut.
    sqlite3_exec(connection, "PRAGMA synchronous=EXTRA", nullptr, nullptr, nullptr);
    const auto onCommit = [](void *self, sqlite3 *, const char *, int pages) {
        static_cast<WriteConnection *>(self)->m_logPages = pages;
        return SQLITE_OK;
    };
    sqlite3_wal_hook(connection, onCommit, this);
}

bool WriteConnection::run(Query &&query, const char *message)
{
    return readEach(std::move(query), message, [](const Statement &) {});
}

void WriteConnection::noteLog()
{
    const int pages = std::exchange(m_logPages, 0);
    if (pages >= copiedLogPages)
        checkpoint(pages >= restartedLogPages ? SQLITE_CHECKPOINT_RESTART : SQLITE_CHECKPOINT_PASSIVE,
                   pages >= greatestLogPages ? busyTimeoutMs : restartTimeoutMs);
    noteUnfoldedLog();
}

void WriteConnection::noteUnfoldedLog()
{
    if (!std::exchange(m_isLogUnfolded, true))
        m_onLogGrew();
}

bool WriteConnection::foldLog()
{
    if (m_isLogUnfolded && connection() != nullptr)
        m_isLogUnfolded = checkpoint(SQLITE_CHECKPOINT_TRUNCATE, foldTimeoutMs) != SQLITE_OK;
    return !m_isLogUnfolded;
}

int WriteConnection::checkpoint(int mode, int timeoutMs)
{
    const ReadMark::Pause pause(m_mark);
    sqlite3_busy_timeout(connection(), timeoutMs);
    const int code = sqlite3_wal_checkpoint_v2(connection(), nullptr, mode, nullptr, nullptr);
    sqlite3_busy_timeout(connection(), busyTimeoutMs);
    return code;
}

} // namespace tarnelLib::controller
