#pragma once

namespace bench {

/// Which clock the time is taken from.
enum class Clock {
    Wall,
    Processor ///< Of all threads of the process; for a machine that has other work.
};

/// In seconds.
double now(Clock clock);

} // namespace bench
