/// @file
/// The cache's thread from its launch to its exit.
#ifndef TARNEL_LAUNCH_HPP
#define TARNEL_LAUNCH_HPP

#include <tarnel/result.hpp>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <unistd.h>

// Only a program that is linked with Qt can ask for its application object.
#if defined(QT_CORE_LIB) && __has_include(<QCoreApplication>)
#include <QCoreApplication>
#define TARNEL_APPLICATION
#endif

namespace tarnel {

/// What a start does about a file that could not be used and was made anew, without tables (launch results 101 to 103).
enum class Recreated {
    Report,   ///< Nothing: the start has failed with that code.
    StartOver ///< Deletes the file and launches again, which makes one with tables. What was in it is gone already.
};

/// A cache that has been started.
struct Launch {
    /// TARNEL_SUCCESS if the stored records are there, or else TARNEL_DATABASE_CREATED.
    unsigned int code;
    /// The result of the first launch, if the start was made over; else the same.
    unsigned int first;

    /// Whether the cache is empty, so that everything is to be asked of the server.
    [[nodiscard]] bool isNew() const noexcept { return code != TARNEL_SUCCESS; }
};

/// The thread in which the cache runs. There is one cache in a process. Use it as `Cache`, which adds the calls.
class CacheThread
{
public:
    CacheThread() = default;
    CacheThread(const CacheThread &) = delete;
    CacheThread &operator=(const CacheThread &) = delete;
    ~CacheThread() { stop(); }

    /// Starts the cache in the current directory and waits until it runs; after a `stop`, again. If it fails, nothing
    /// runs. The codes are those of a launch; TARNEL_NOT_AVAILABLE if the cache does not run in time;
    /// TARNEL_INVALID_ARGUMENT if one runs already, or if the library is not that of these headers. It may take some
    /// seconds longer than the time-out: a launch that waits for a lock on the file does not end before.
    ///
    /// An application object of Qt is made before, and kept until the stop. Should it go first, the cache is stopped at
    /// that moment, with a warning in Qt's log, if the program was compiled for Qt Core.
    Result<Launch> start(std::chrono::milliseconds timeout = std::chrono::seconds(30),
                         Recreated recreated = Recreated::StartOver)
    {
        const std::lock_guard lock(m_mutex);
        if (const unsigned int code = tarnelCheckVersion(TARNEL_VERSION, TARNEL_LAYOUT); code != TARNEL_SUCCESS)
            return Result<void>(code);
        if (getState() != TARNEL_STATE_NONE || (m_thread.joinable() && !m_isOver))
            return Result<void>(TARNEL_INVALID_ARGUMENT, "a cache is running already");
        end();
        watchApplication();
        const auto deadline = Clock::now() + std::min<std::chrono::milliseconds>(timeout, std::chrono::hours(24));
        Result<void> launched = launch(deadline);
        const unsigned int first = launched.code();
        if (isRecreated(first) && recreated == Recreated::StartOver) {
            end();
            launched = removeFile();
            if (launched.ok())
                launched = launch(deadline);
        }
        if (launched.ok() || launched.code() == TARNEL_DATABASE_CREATED)
            return Launch{launched.code(), isRecreated(first) ? first : launched.code()};
        end();
        return launched;
    }

    /// Ends the cache and waits for its thread. Calls on other threads return TARNEL_NOT_AVAILABLE from then on.
    void stop() noexcept
    {
        const std::lock_guard lock(m_mutex);
        end();
    }

    [[nodiscard]] TarnelState state() const noexcept { return static_cast<TarnelState>(getState()); }
    /// What the launch came to, as `getLaunchCacheResult` says it.
    [[nodiscard]] unsigned int launchResult() const noexcept { return getLaunchCacheResult(); }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::microseconds pause{200};

    static bool isRecreated(unsigned int code) noexcept
    {
        return code >= TARNEL_DATABASE_RECREATED_TABLES_INVALID && code <= TARNEL_DATABASE_RECREATED_VERSION_MISMATCH;
    }

    /// Launches once, and gives the launch result.
    Result<void> launch(Clock::time_point deadline)
    {
        m_isOver = false;
        m_process = ::getpid();
        try {
            m_thread = std::thread([this] {
                launchCache();
                m_isOver = true;
            });
        } catch (const std::system_error &error) {
            return {TARNEL_NOT_AVAILABLE, error.what()};
        }
        while (getState() != TARNEL_STATE_RUNNING) {
            if (m_isOver)
                return {TARNEL_NOT_AVAILABLE, "the launch has ended at once"};
            if (Clock::now() >= deadline)
                return {TARNEL_NOT_AVAILABLE, "the cache does not run in time"};
            std::this_thread::sleep_for(pause);
        }
        const unsigned int code = getLaunchCacheResult();
        return code == TARNEL_DATABASE_UNAVAILABLE ? Result<void>(code) : Result<void>(code, tarnelCodeAdvice(code));
    }

    void end() noexcept
    {
        if (!m_thread.joinable())
            return;
        forgetApplication();
        if (m_process != ::getpid()) {
            // The child of a fork: the thread is the parent's.
            m_thread.detach();
            return;
        }
        // An exit before the thread has entered the launch would be lost: it is asked for again until the launch ends.
        while (!m_isOver) {
            exitCache();
            std::this_thread::sleep_for(pause);
        }
        m_thread.join();
    }

    static Result<void> removeFile()
    {
        for (const char *name : {"CacheDb-wal", "CacheDb-shm", "CacheDb-journal", "CacheDb"}) {
            if (std::remove(name) != 0 && errno != ENOENT)
                return {TARNEL_DATABASE_UNAVAILABLE, std::string(name) + ": " + std::strerror(errno)};
        }
        return {TARNEL_SUCCESS, ""};
    }

#ifdef TARNEL_APPLICATION
#undef TARNEL_APPLICATION
    /// Later there may be an application object of the cache's own.
    void watchApplication()
    {
        if (QCoreApplication::instance() == nullptr)
            return;
        s_watching = this;
        qAddPostRoutine(onApplicationGone);
    }

    void forgetApplication() noexcept
    {
        if (CacheThread *self = this; s_watching.compare_exchange_strong(self, nullptr))
            qRemovePostRoutine(onApplicationGone);
    }

    static void onApplicationGone()
    {
        if (CacheThread *cache = s_watching.exchange(nullptr)) {
            qWarning("tarnel::Cache: the application object goes before the cache, which is stopped now");
            cache->stop();
        }
    }

    static inline std::atomic<CacheThread *> s_watching = nullptr;
#else
    void watchApplication() noexcept {}
    void forgetApplication() noexcept {}
#endif

    std::mutex m_mutex; ///< Held while the cache is started or stopped.
    std::thread m_thread;
    std::atomic<bool> m_isOver = true;
    pid_t m_process = 0; ///< In which the thread is.
};

} // namespace tarnel

#endif
