#include "runtime/eventdispatcher.h"

#include <QCoreApplication>

#include <algorithm>

namespace tarnelLib::runtime {

bool EventDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    Q_EMIT awake();
    QCoreApplication::sendPostedEvents();
    if (fireTimers())
        return true;
    if (!flags.testFlag(QEventLoop::WaitForMoreEvents))
        return false;
    Q_EMIT aboutToBlock();
    const auto next = std::min_element(m_timers.begin(), m_timers.end(),
                                       [](const Timer &left, const Timer &right) { return left.due < right.due; });
    std::unique_lock lock(m_mutex);
    const auto isWoken = [this] { return m_isWoken; };
    if (next == m_timers.end())
        m_wake.wait(lock, isWoken);
    else
        m_wake.wait_until(lock, next->due, isWoken);
    // Not before the wait: what has come since the events were sent must end it.
    m_isWoken = false;
    return true;
}

bool EventDispatcher::hasPendingEvents()
{
    const std::lock_guard lock(m_mutex);
    return m_isWoken;
}

/// A timer's receiver may stop any timer, also this one.
bool EventDispatcher::fireTimers()
{
    const auto now = Clock::now();
    std::vector<int> due;
    for (const Timer &timer : m_timers) {
        if (timer.due <= now)
            due.push_back(timer.info.timerId);
    }
    for (const int id : due) {
        const auto timer = std::find_if(m_timers.begin(), m_timers.end(),
                                        [id](const Timer &other) { return other.info.timerId == id; });
        if (timer == m_timers.end())
            continue;
        timer->due = now + std::chrono::milliseconds(timer->info.interval);
        QTimerEvent event(id);
        QCoreApplication::sendEvent(timer->object, &event);
    }
    return !due.empty();
}

void EventDispatcher::registerTimer(int id, int interval, Qt::TimerType type, QObject *object)
{
    m_timers.push_back({{id, interval, type}, object, Clock::now() + std::chrono::milliseconds(interval)});
}

bool EventDispatcher::unregisterTimer(int id)
{
    return std::erase_if(m_timers, [id](const Timer &timer) { return timer.info.timerId == id; }) != 0;
}

bool EventDispatcher::unregisterTimers(QObject *object)
{
    return std::erase_if(m_timers, [object](const Timer &timer) { return timer.object == object; }) != 0;
}

QList<QAbstractEventDispatcher::TimerInfo> EventDispatcher::registeredTimers(QObject *object) const
{
    QList<TimerInfo> timers;
    for (const Timer &timer : m_timers) {
        if (timer.object == object)
            timers.append(timer.info);
    }
    return timers;
}

int EventDispatcher::remainingTime(int id)
{
    for (const Timer &timer : m_timers) {
        if (timer.info.timerId == id) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(timer.due - Clock::now());
            return static_cast<int>(std::max(left, std::chrono::milliseconds::zero()).count());
        }
    }
    return -1;
}

void EventDispatcher::wakeUp()
{
    const std::lock_guard lock(m_mutex);
    m_isWoken = true;
    m_wake.notify_one();
}

} // namespace tarnelLib::runtime
