#pragma once

#include "bench/workloads.h"

namespace bench {

/// What the rounds of a workload have given: seconds, one for each round.
struct Measurement {
    std::vector<double> library;
    std::vector<double> baseline;
    bool isSame = true; ///< Whether both sides have answered and stored the same, in every round that was compared.
};

/// Runs a workload in rounds, in each of which both sides have their turn: what slows a whole round down does not touch
/// the ratio. A round before the first one fills the caches, and is compared only.
Measurement measure(const Workload &workload, Fixtures &fixtures, Clock clock);

} // namespace bench
