#include "storage/turns.h"

#include <numeric>

namespace tarnelLib::controller {

void Turns::open(std::size_t connections)
{
    const std::lock_guard lock(m_mutex);
    m_free.resize(connections);
    std::iota(m_free.begin(), m_free.end(), 0);
}

std::size_t Turns::take()
{
    std::unique_lock lock(m_mutex);
    if (m_isClosed)
        throw Closed();
    if (!m_free.empty()) {
        const std::size_t connection = m_free.back();
        m_free.pop_back();
        return connection;
    }
    Waiter waiter;
    m_waiters.push_back(&waiter);
    waiter.isServed.wait(lock, [&] { return m_isClosed || waiter.connection; });
    if (!waiter.connection)
        throw Closed();
    return *waiter.connection;
}

void Turns::giveBack(std::size_t connection) noexcept
{
    const std::lock_guard lock(m_mutex);
    if (m_waiters.empty()) {
        m_free.push_back(connection); // There is room: it was taken from here.
        return;
    }
    Waiter &next = *m_waiters.front();
    m_waiters.pop_front();
    next.connection = connection;
    next.isServed.notify_one();
}

void Turns::close() noexcept
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    for (Waiter *waiter : m_waiters)
        waiter->isServed.notify_one();
    m_waiters.clear();
}

} // namespace tarnelLib::controller
