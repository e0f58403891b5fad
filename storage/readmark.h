#pragma once

#include <sqlite3.h>

#include <functional>
#include <mutex>

namespace tarnelLib::controller {

/// Holds the present state of the file while reads are frequent, and reads nothing itself.
///
/// SQLite has the kernel lock a state when the first connection of the process begins to read it, and unlock it when
/// the last one ends. That is half the time of a short read, and it is spent while the other threads wait. Beside a
/// connection that holds the state, reads do neither. All of this is done without a word if it fails: reads take longer
/// then, that is all.
class ReadMark
{
public:
    /// `onHeld` is called when a state is held and none was before: `release` is to follow soon. Until then another
    /// process cannot empty the log.
    explicit ReadMark(std::function<void()> onHeld) : m_onHeld(std::move(onHeld)) {}
    ReadMark(const ReadMark &) = delete;
    ReadMark &operator=(const ReadMark &) = delete;
    ~ReadMark() { close(); }

    void open(const char *path);
    void close() noexcept;

    /// Holds what is the present state now.
    void renew() noexcept;
    void release() noexcept;

    /// Holds nothing while the object lives.
    class Pause
    {
    public:
        explicit Pause(ReadMark &mark) : m_lock(mark.m_mutex) { mark.releaseLocked(); }

    private:
        std::unique_lock<std::mutex> m_lock;
    };

private:
    void releaseLocked() noexcept;

    std::function<void()> m_onHeld;
    std::mutex m_mutex;
    sqlite3 *m_connection = nullptr;
    sqlite3_stmt *m_statement = nullptr; ///< Between two rows while a state is held.
};

} // namespace tarnelLib::controller
