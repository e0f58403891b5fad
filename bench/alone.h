#pragma once

#include "bench/options.h"
#include "bench/rounds.h"

namespace bench {

/// What a workload costs one side that has a process of its own.
struct Cost {
    double seconds = 0;       ///< The median of the calls after the first.
    std::size_t bytes = 0;    ///< What a call takes at its peak, above what the process had before.
    double faults = 0;        ///< How many pages the system gives to each further call.
    std::uint64_t digest = 0; ///< Of the answers of the first call.
};

/// What it costs here, in the process of `options.alone`. Only the first call is made if it writes.
Cost costHere(const Workload &workload, const Options &options);

/// Tells it to the process that has started this one.
void tell(const Cost &cost);

/// Both sides, each in a process of its own.
struct Costs {
    Cost library;
    Cost baseline;

    [[nodiscard]] bool isSame() const { return library.digest == baseline.digest; }
};

/// Starts a process for each side. Its file must have been provided, and neither side be at work here.
Costs costsAlone(const Workload &workload, const Options &options, unsigned int start);

/// Starts as many processes for each side as the options say, by turns; as `costsAlone`.
Measurement measureStarts(const Workload &workload, const Options &options);

} // namespace bench
