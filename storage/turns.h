#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace tarnelLib::controller {

/// Takes a mutex that is held for moments only: to sleep until it is free would take longer than to try again.
std::unique_lock<std::mutex> lockBriefly(std::mutex &mutex);

/// Turns at connections, of which each serves one call at a time. Calls get them in the order in which they ask: a
/// mutex would let a busy thread overtake a waiting one again and again.
class Turns
{
public:
    /// Thrown at a call that gets no turn any more.
    struct Closed {
    };

    explicit Turns(std::size_t connections = 0) { open(connections); }

    /// Sets the number of connections, before the first call asks.
    void open(std::size_t connections);

    /// Waits for a free connection, and gives its number.
    [[nodiscard]] std::size_t take();
    void giveBack(std::size_t connection) noexcept;

    /// Sends away the calls that wait, and those that ask from now on.
    void close() noexcept;

private:
    struct Waiter {
        std::condition_variable isServed;
        std::optional<std::size_t> connection;
    };

    std::mutex m_mutex;
    std::vector<std::size_t> m_free; ///< The one that was used last is the next: its pages are in memory.
    std::deque<Waiter *> m_waiters;
    bool m_isClosed = false;
};

/// A call's turn at a connection, which ends with the object.
template <class ConnectionType>
class Turn
{
public:
    Turn(Turns &turns, std::size_t number, ConnectionType &connection)
        : m_turns(turns), m_number(number), m_connection(connection)
    {
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    ~Turn() { m_turns.giveBack(m_number); }

    ConnectionType &operator*() const { return m_connection; }
    ConnectionType *operator->() const { return &m_connection; }

private:
    Turns &m_turns;
    std::size_t m_number;
    ConnectionType &m_connection;
};

} // namespace tarnelLib::controller
