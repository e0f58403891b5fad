#pragma once

#include "bench/workloads.h"

#include <string>
#include <vector>

namespace bench {

/// What the rounds of a workload have given: seconds, one for each round.
struct Measurement {
    std::vector<double> library;
    std::vector<double> baseline;
    bool isSame = true; ///< Whether both sides have answered and stored the same, in every round that was compared.
};

/// Which clock the time is taken from.
enum class Clock {
    Wall,
    Processor ///< Of all threads of the process; for a machine that has other work.
};

/// Runs a workload in rounds, in each of which both sides have their turn: what slows a whole round down does not touch
/// the ratio. A round before the first one fills the caches, and is compared only.
Measurement measure(const Workload &workload, Fixtures &fixtures, Clock clock);

/// How many bytes the process takes, at its peak during the first call, above those that it had before.
struct Memory {
    std::size_t library = 0;
    std::size_t baseline = 0;
};

/// Measures each side in a process of its own, which must not have threads yet.
Memory measureMemory(const Workload &workload);

} // namespace bench
