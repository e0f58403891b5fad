#include "bench/rounds.h"

#include "bench/baseline/baseline.h"

#include <memory>

namespace bench {

namespace {

/// Opens the sides that are not given, one after the other: what one does at its end is no burden on the other.
struct Sides {
    std::unique_ptr<Side> library;
    std::unique_ptr<Side> baseline;
};

Run runLibrary(const Task &task, const Sides &sides, Clock clock)
{
    return sides.library ? runOnce(task, *sides.library, clock) : runOnce(task, *std::make_unique<Library>(), clock);
}

Run runBaseline(const Task &task, const Sides &sides, Clock clock)
{
    return sides.baseline ? runOnce(task, *sides.baseline, clock)
                          : runOnce(task, *std::make_unique<Baseline>(baselineFile), clock);
}

} // namespace

Measurement measure(const Workload &workload, Fixtures &fixtures, Clock clock)
{
    Measurement measurement;
    fixtures.provide(workload.fixture);
    const Task task = workload.prepare();
    Sides sides;
    if (!workload.isWriting)
        sides = {std::make_unique<Library>(), std::make_unique<Baseline>(baselineFile)};
    for (int round = 0; round <= workload.rounds; ++round) {
        if (workload.isWriting && round > 0)
            fixtures.provide(workload.fixture);
        // By turns, the one and the other goes first.
        Run library{};
        Run baseline{};
        if (round % 2 == 0) {
            library = runLibrary(task, sides, clock);
            baseline = runBaseline(task, sides, clock);
        } else {
            baseline = runBaseline(task, sides, clock);
            library = runLibrary(task, sides, clock);
        }
        measurement.isSame = measurement.isSame && library.digest == baseline.digest;
        if (round > 0) {
            measurement.library.push_back(library.seconds);
            measurement.baseline.push_back(baseline.seconds);
        } else if (workload.isWriting) {
            measurement.isSame = measurement.isSame && haveSameContent();
        }
    }
    return measurement;
}

} // namespace bench
