#include "bench/log.h"
#include "bench/statistics.h"
#include "bench/together.h"

/// What threads that read get beside others.
namespace bench {

namespace {

/// As a client reads now and then: a reader without rest would leave no moment in which the writer can begin.
constexpr std::chrono::microseconds pause{1000};

/// One thread and several take turns, as the machine's speed drifts.
constexpr unsigned int rateRounds = 9;

struct Named {
    std::string name;
    Calls calls;
};

std::vector<Named> readers(Stage &stage)
{
    return {{"getUser", stage.gettingUser()}, {"getEvents of 100 rows", stage.gettingEvents()}};
}

/// What reads take that are due at every pause: a long call keeps those waiting that are due meanwhile. Without them,
/// a library that stops now and then would look better the longer it stops.
std::vector<double> waits(const Served &served)
{
    std::vector<double> seconds;
    for (const double call : served.seconds) {
        for (double left = call; left > 0; left -= std::chrono::duration<double>(pause).count())
            seconds.push_back(left);
    }
    return seconds;
}

/// Each reader alone, and beside the writer.
void measureBeside(Stage &stage, const Named &writer, double times)
{
    for (const auto &[name, calls] : readers(stage)) {
        // The library is not idle before it has folded away what was written last, and has read what it had then.
        secondsUntilEmptyLog();
        serve(calls, stage.period(0.1), pause);
        const Served apart = serve(calls, stage.period(), pause);
        Caller writing(writer.calls);
        const Served together = serve(calls, stage.period(times), pause);
        const Served written = writing.stop();
        const std::string remark = withCommas(static_cast<std::uint32_t>(together.seconds.size())) + " reads, " +
                                   std::to_string(written.seconds.size()) + " writes";
        const bool isSame = apart.isSame && together.isSame && written.isSame;
        const std::string description = name + " beside " + writer.name;
        stage.print({description + ": median", units::fineMilliseconds, median(waits(together)), median(waits(apart)),
                     isSame, remark});
        stage.print({description + ": p99", units::fineMilliseconds, percentile99(waits(together)),
                     percentile99(waits(apart)), isSame, remark});
    }
}

void measureBesideEvents(Stage &stage, std::uint32_t events, double times)
{
    measureBeside(stage, {"addEvents of " + withCommas(events), stage.addingEvents(0, 1, events)}, times);
}

/// How many calls a second so many threads make together.
struct Rate {
    double callsPerSecond = 0;
    bool isSame = true;
};

Rate rateOf(Stage &stage, const Calls &calls, unsigned int threads)
{
    std::vector<std::unique_ptr<Caller>> callers;
    for (unsigned int i = 0; i < threads; ++i)
        callers.push_back(std::make_unique<Caller>(calls));
    std::this_thread::sleep_for(stage.period(1.0 / rateRounds));
    Rate rate;
    for (const auto &caller : callers) {
        const Served served = caller->stop();
        rate.callsPerSecond += served.callsPerSecond();
        rate.isSame = rate.isSame && served.isSame;
    }
    return rate;
}

} // namespace

void measureReadsBesideWrites(Stage &stage)
{
    measureBesideEvents(stage, stage.scaled(100000), 1);
    const std::uint32_t sites = stage.scaled(2000);
    measureBeside(stage, {"addSites of " + withCommas(sites), stage.addingSites()}, 1);
}

void measureReadsBesideLargeWrites(Stage &stage)
{
    // Long enough for several calls that add.
    measureBesideEvents(stage, stage.scaled(1000000), 5);
}

void measureReaders(Stage &stage)
{
    for (const auto &[name, calls] : readers(stage)) {
        for (const unsigned int threads : {2U, 4U}) {
            std::vector<double> together;
            std::vector<double> apart;
            bool isSame = true;
            for (unsigned int round = 0; round < rateRounds; ++round) {
                const Rate one = rateOf(stage, calls, 1);
                const Rate all = rateOf(stage, calls, threads);
                apart.push_back(one.callsPerSecond);
                together.push_back(all.callsPerSecond);
                isSame = isSame && one.isSame && all.isSame;
            }
            stage.print({name + " by " + std::to_string(threads) + " threads, against one", units::callsPerSecond,
                         median(together), median(apart), isSame, withCommas(rateRounds) + " rounds"});
        }
    }
}

} // namespace bench
