#include "bench/callers.h"

#include <numeric>

namespace bench {

Calls::Calls(Side &side, std::vector<Task> tasks) : m_side(side), m_tasks(std::move(tasks))
{
    for (std::size_t i = 0; i < m_tasks.size(); ++i)
        m_digests.push_back(make(i).digest);
}

Run Calls::make(std::size_t index) const
{
    return runOnce(m_tasks[index % m_tasks.size()], m_side, Clock::Wall);
}

bool Calls::isAnswer(std::size_t index, const Run &run) const
{
    return run.digest == m_digests[index % m_digests.size()];
}

double Served::callsPerSecond() const
{
    return static_cast<double>(seconds.size()) / std::accumulate(seconds.begin(), seconds.end(), 0.0);
}

Caller::Caller(const Calls &calls, std::chrono::microseconds pause)
    : m_thread([this, &calls, pause](const std::stop_token &stop) { run(stop, calls, pause); })
{
}

Served Caller::stop()
{
    m_thread.request_stop();
    m_thread.join();
    if (m_failure)
        std::rethrow_exception(m_failure);
    return std::move(m_served);
}

void Caller::run(const std::stop_token &stop, const Calls &calls, std::chrono::microseconds pause)
{
    try {
        for (std::size_t i = 0; i == 0 || !stop.stop_requested(); ++i) {
            const Run run = calls.make(i);
            m_served.seconds.push_back(run.seconds);
            m_served.isSame = m_served.isSame && calls.isAnswer(i, run);
            if (pause.count() > 0)
                std::this_thread::sleep_for(pause);
        }
    } catch (...) {
        m_failure = std::current_exception();
    }
}

Served serve(const Calls &calls, std::chrono::duration<double> time, std::chrono::microseconds pause)
{
    Caller caller(calls, pause);
    std::this_thread::sleep_for(time);
    return caller.stop();
}

} // namespace bench
