#pragma once

#include <QAbstractEventDispatcher>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace tarnelLib::runtime {

/// Delivers posted events and timers on the launching thread, which is all that the cache needs.
///
/// Qt's own for an application object is a GLib one and takes GLib's default context. That one belongs to the client: a
/// GTK program would find its callbacks run on the launching thread, or its own loop without a context.
class EventDispatcher : public QAbstractEventDispatcher
{
    Q_OBJECT

public:
    using Clock = std::chrono::steady_clock;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    bool hasPendingEvents() override;

    void registerTimer(int id, int interval, Qt::TimerType type, QObject *object) override;
    bool unregisterTimer(int id) override;
    bool unregisterTimers(QObject *object) override;
    QList<TimerInfo> registeredTimers(QObject *object) const override;
    int remainingTime(int id) override;

    /// There is nothing to watch on this thread.
    void registerSocketNotifier(QSocketNotifier *) override {}
    void unregisterSocketNotifier(QSocketNotifier *) override {}

    void wakeUp() override;
    void interrupt() override { wakeUp(); }
    void flush() override {}

private:
    struct Timer {
        TimerInfo info;
        QObject *object;
        Clock::time_point due;
    };

    bool fireTimers();

    std::vector<Timer> m_timers; ///< Of the launching thread alone, as all but waking up and interrupting.

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isWoken = false; ///< By a posted event, or by the wish to end the loop.
};

} // namespace tarnelLib::runtime
