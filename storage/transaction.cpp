#include "storage/transaction.h"

namespace tarnelLib::controller {

namespace {

/// Whether the file has been moved or deleted since it was opened: what is written to it then, nobody will find.
bool isFileGone(sqlite3 *connection)
{
    int hasMoved = 0;
    return connection != nullptr &&
           sqlite3_file_control(connection, nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK && hasMoved != 0;
}

} // namespace

bool Transaction::begin()
{
    if (m_isOpen)
        return true;
    if (m_purpose == For::Writing && isFileGone(m_preparer.connection())) {
        m_failure = {SQLITE_READONLY_DBMOVED,
                     QStringLiteral("the database file was moved or deleted while it was open")};
        return false;
    }
    // What undoes the transaction is prepared first: later there may be no memory for it.
    m_preparer.prepareText("ROLLBACK");
    m_isOpen = execute("BEGIN");
    return m_isOpen;
}

bool Transaction::commit()
{
    if (m_isOpen && !execute("COMMIT"))
        return false;
    m_isOpen = false;
    return true;
}

Transaction::~Transaction()
{
    // Some failures have made SQLite undo the transaction already.
    if (m_isOpen && sqlite3_get_autocommit(m_preparer.connection()) == 0)
        execute("ROLLBACK");
}

bool Transaction::execute(const char *sql)
{
    const Query query = m_preparer.prepareText(sql);
    if (query->step() == Statement::Step::Done)
        return true;
    m_failure = query->failure();
    return false;
}

} // namespace tarnelLib::controller
