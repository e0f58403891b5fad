#include "cache.h"

#include "functions.h"

#include <tarnel/tarnel.h>

#include <QString>

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

namespace fuzz {

namespace {

std::atomic<std::size_t> commitCount = 0;
std::atomic<void *> committing = nullptr; ///< The connection that has counted last.

int countCommit(void *connection)
{
    ++commitCount;
    committing = connection;
    return 0;
}

/// It counts before it is carried out: on a spoiled file it may fail.
void discountCommit(void *connection)
{
    if (committing.exchange(nullptr) == connection)
        --commitCount;
}

/// What SQLite calls with each connection that is opened in the process.
int watch(sqlite3 *connection, const char **, const sqlite3_api_routines *)
{
    sqlite3_commit_hook(connection, countCommit, connection);
    sqlite3_rollback_hook(connection, discountCommit, connection);
    return SQLITE_OK;
}

} // namespace

Cache::Cache()
{
    if (std::filesystem::exists("CacheDb")) {
        std::fputs("There is a CacheDb in the current directory, which this would change.\n", stderr);
        std::_Exit(1);
    }
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {}); // Failures are made here.
    std::thread(&Cache::serve, this).detach();
}

/// One thread for all launches: Qt keeps something of each thread.
void Cache::serve()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_endedLaunches < m_launches; });
        lock.unlock();
        launchCache();
        lock.lock();
        ++m_endedLaunches;
        m_changed.notify_all();
    }
}

unsigned int Cache::launch()
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_launches;
    }
    m_changed.notify_all();
    while (getState() != TARNEL_STATE_RUNNING)
        std::this_thread::sleep_for(std::chrono::microseconds(20));
    m_isRunning = true;
    return getLaunchCacheResult();
}

void Cache::exit()
{
    exitCache();
    if (getState() != TARNEL_STATE_NONE || getLaunchCacheResult() != TARNEL_NOT_AVAILABLE)
        fail("exitCache", "a state after the exit");
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_endedLaunches == m_launches; });
    m_isRunning = false;
}

std::size_t commits()
{
    committing = nullptr;
    return commitCount;
}

void checkIntegrity()
{
    sqlite3 *connection = nullptr;
    std::string found;
    const auto keep = [](void *kept, int, char **columns, char **) {
        *static_cast<std::string *>(kept) += columns[0];
        return 0;
    };
    if (sqlite3_open_v2("CacheDb", &connection, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(connection, 5000); // The cache may be folding its log.
        sqlite3_exec(connection, "PRAGMA integrity_check", keep, &found, nullptr);
    }
    sqlite3_close(connection);
    if (found != "ok")
        fail("integrity_check", found);
}

} // namespace fuzz
