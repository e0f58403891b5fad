#include "storage/readmark.h"

#include <utility>

namespace tarnelLib::controller {

void ReadMark::open(const char *path)
{
    if (sqlite3_open_v2(path, &m_connection, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK)
        sqlite3_prepare_v3(m_connection, "SELECT 1 FROM sqlite_master", -1, SQLITE_PREPARE_PERSISTENT, &m_statement,
                           nullptr);
}

void ReadMark::close() noexcept
{
    sqlite3_finalize(std::exchange(m_statement, nullptr));
    sqlite3_close_v2(std::exchange(m_connection, nullptr));
}

void ReadMark::renew() noexcept
{
    // Whoever has it does the same, or folds the log: nobody waits for that.
    const std::unique_lock lock(m_mutex, std::try_to_lock);
    if (!lock || m_statement == nullptr)
        return; // GCOVR_EXCL_LINE: only now and then two threads come at once.
    const bool isHeld = sqlite3_stmt_busy(m_statement) != 0;
    sqlite3_reset(m_statement);
    if (sqlite3_step(m_statement) != SQLITE_ROW || isHeld)
        return;
    try {
        m_onHeld();
    } catch (...) {
        releaseLocked(); // GCOVR_EXCL_LINE: Qt had no memory for the timer's event.
    }
}

void ReadMark::release() noexcept
{
    const std::lock_guard lock(m_mutex);
    releaseLocked();
}

void ReadMark::releaseLocked() noexcept
{
    sqlite3_reset(m_statement);
}

} // namespace tarnelLib::controller
