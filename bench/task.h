#pragma once

#include "bench/side.h"

#include <functional>

namespace bench {

/// The same calls for both sides.
using Task = std::function<void(Side &, Answers &)>;

/// What has come of running a task once.
struct Run {
    double seconds = 0;
    std::uint64_t digest = 0; ///< Of all answers.
};

inline Run runOnce(const Task &task, Side &side, Clock clock)
{
    Answers answers(clock);
    const double start = now(clock);
    task(side, answers);
    return {now(clock) - start - answers.secondsOffTheClock(), answers.digest()};
}

} // namespace bench
