#include "storage/turns.h"

#include <algorithm>

namespace tarnelLib::controller {

std::unique_lock<std::mutex> lockBriefly(std::mutex &mutex)
{
    std::unique_lock lock(mutex, std::defer_lock);
    for (int tries = 0; tries < 200; ++tries) {
        if (lock.try_lock())
            return lock;
    }
    lock.lock(); // GCOVR_EXCL_LINE: whoever has it has lost its processor.
    return lock;
}

void Turns::open(std::size_t connections)
{
    while (m_free.size() < connections)
        m_free.push_back(m_free.size());
}

std::size_t Turns::take()
{
    std::unique_lock lock = lockBriefly(m_mutex);
    if (m_isClosed)
        throw Closed(); // GCOVR_EXCL_LINE: an exit has come between the call's beginning and this line.
    if (!m_free.empty()) {
        // The one that this thread had last, if it is free: what it keeps is near the thread's processor.
        thread_local std::size_t last = 0;
        std::iter_swap(m_free.end() - 1, std::find(m_free.begin(), m_free.end() - 1, last));
        last = m_free.back();
        m_free.pop_back();
        return last;
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
    const auto lock = lockBriefly(m_mutex);
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
