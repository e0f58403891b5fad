#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace fuzz {

/// The cache of this process, in the current directory, on a thread of its own. A launch is awaited until it runs, an
/// exit until the launch has returned. It is never destroyed: its thread is Qt's until the process ends.
class Cache
{
public:
    /// Ends the program if there is a file in the current directory, which is somebody's.
    Cache();
    Cache(const Cache &) = delete;
    Cache &operator=(const Cache &) = delete;
    ~Cache() = delete;

    /// Gives the launch result.
    unsigned int launch();
    void exit();
    [[nodiscard]] bool isRunning() const { return m_isRunning; }

private:
    void serve();

    bool m_isRunning = false;
    std::mutex m_mutex; ///< Of what follows.
    std::condition_variable m_changed;
    unsigned int m_launches = 0; ///< Asked for.
    unsigned int m_endedLaunches = 0;
};

/// How many transactions that write have been committed in this process.
std::size_t commits();

/// Lets SQLite go through the whole file; ends the program if it finds a fault.
void checkIntegrity();

} // namespace fuzz
