#pragma once

#include "bench/task.h"

#include <chrono>
#include <exception>
#include <thread>
#include <vector>

namespace bench {

/// Single calls of the library, with what each of them answers whatever else goes on.
class Calls
{
public:
    /// Makes each call once, for its answer.
    Calls(Side &side, std::vector<Task> tasks);

    /// Makes one of them; after the last comes the first.
    [[nodiscard]] Run make(std::size_t index) const;
    [[nodiscard]] bool isAnswer(std::size_t index, const Run &run) const;

private:
    Side &m_side;
    std::vector<Task> m_tasks;
    std::vector<std::uint64_t> m_digests;
};

/// What a thread has got.
struct Served {
    std::vector<double> seconds; ///< Of each call; one at least.
    bool isSame = true;          ///< Whether every answer was the one that it is to be.

    /// How many calls there were for each second spent in them.
    [[nodiscard]] double callsPerSecond() const;
};

/// A thread that makes calls one after the other, until it is stopped.
class Caller
{
public:
    /// It pauses after each call, if it is told to.
    explicit Caller(const Calls &calls, std::chrono::microseconds pause = {});

    /// Lets the call in progress end. Throws what a call has thrown.
    Served stop();

private:
    void run(const std::stop_token &stop, const Calls &calls, std::chrono::microseconds pause);

    Served m_served;
    std::exception_ptr m_failure;
    std::jthread m_thread; ///< The last member: it works on the others.
};

/// What a caller gets in this time.
Served serve(const Calls &calls, std::chrono::duration<double> time, std::chrono::microseconds pause = {});

} // namespace bench
