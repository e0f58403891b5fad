#include "storage/connection.h"

#include "diagnostics/reason.h"

#include <QDebug>

#include <mutex>

namespace tarnelLib::controller {

namespace {

/// Keeps the lines of one failure together. A message handler must not call the library: the call has its connection.
std::recursive_mutex logMutex;

/// Whether the file has been moved or deleted since it was opened: what is written to it then, nobody will find.
bool isFileGone(sqlite3 *connection)
{
    int hasMoved = 0;
    return connection != nullptr &&
           sqlite3_file_control(connection, nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK && hasMoved != 0;
}

} // namespace

int Connection::openForReading(const char *path)
{
    // One call at a time has it, so that it needs no locks of its own.
    const int code = sqlite3_open_v2(path, &m_own, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK)
        return code;
    attach(m_own);
    configure();
    // With the schema read now, reads report what becomes of the tables later in the words of the other connections.
    return sqlite3_exec(m_own, "SELECT 1 FROM sqlite_master", nullptr, nullptr, nullptr);
}

void Connection::configure()
{
    // 100,000 users read in random order take 1.19 times as long with SQLite's own 2 MiB, 1.10 times with 8 MiB, and no
    // less with 64 or 128 MiB; at 800,000 users, adding in random order takes 1.24 times as long with 2 MiB.
    sqlite3_exec(connection(), "PRAGMA cache_size=-16384", nullptr, nullptr, nullptr);
    sqlite3_busy_timeout(connection(), busyTimeoutMs);
}

bool Connection::enter(const char *message, const char *kind)
{
    m_message = message;
    m_kind = kind;
    return !m_purpose || m_hasBegun || begin();
}

bool Connection::begin()
{
    if (m_purpose == For::Writing && isFileGone(connection()))
        return fail(
            {SQLITE_READONLY_DBMOVED, QStringLiteral("the database file was moved or deleted while it was open")});
    // What undoes the transaction is prepared first: later there may be no memory for it.
    prepareText("ROLLBACK");
    m_hasBegun = execute("BEGIN");
    return m_hasBegun;
}

bool Connection::commit()
{
    if (m_hasBegun && !execute("COMMIT"))
        return false;
    m_hasBegun = false;
    return true;
}

void Connection::endTransaction()
{
    m_purpose.reset();
    // Some failures have made SQLite undo the transaction already.
    if (std::exchange(m_hasBegun, false) && sqlite3_get_autocommit(connection()) == 0)
        static_cast<void>(prepareText("ROLLBACK")->step());
}

bool Connection::execute(const char *sql)
{
    const Query query = prepareText(sql);
    return isDone(query->step(), *query);
}

bool Connection::isDone(Statement::Step step, const Statement &statement)
{
    return step == Statement::Step::Done || fail(statement.failure());
}

bool Connection::fail(const Failure &failure)
{
    m_hasMetCircumstance = m_hasMetCircumstance || !Failure::isOfContent(failure.code);
    diagnostics::note(m_message != nullptr ? m_message : m_kind, ": ", diagnostics::unitsOf(failure.text));
    const std::lock_guard lock(logMutex);
    for (const char *line : {m_kind, m_message}) {
        if (line == nullptr)
            continue;
        qDebug("%s", line);
        qDebug().noquote() << failure.text;
    }
    return false;
}

} // namespace tarnelLib::controller
