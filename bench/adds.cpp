#include "bench/log.h"
#include "bench/together.h"

/// What threads that add get beside others, and the log that they leave.
namespace bench {

namespace {

constexpr std::uint32_t eventsPerCall = 100;
constexpr std::uint32_t callsInTurn = 50; ///< Before they begin anew.

} // namespace

void measureAdders(Stage &stage)
{
    const Calls first = stage.addingEvents(0, callsInTurn, eventsPerCall);
    const Calls second = stage.addingEvents(callsInTurn, callsInTurn, eventsPerCall);
    Caller one(first);
    Caller other(second);
    std::this_thread::sleep_for(stage.period());
    const Served ofOne = one.stop();
    const Served ofOther = other.stop();
    const std::size_t least = std::min(ofOne.seconds.size(), ofOther.seconds.size());
    const std::size_t most = std::max(ofOne.seconds.size(), ofOther.seconds.size());
    stage.print({"addEvents of 100 by two threads: the slower against the faster", units::calls,
                 static_cast<double>(least), static_cast<double>(most), ofOne.isSame && ofOther.isSame, ""});
}

void measureLog(Stage &stage)
{
    const std::vector<Calls> reads{stage.gettingUser(), stage.gettingEvents(), stage.gettingDevices()};
    for (const std::uint32_t events : {eventsPerCall, stage.scaled(100000)}) {
        const Calls adds = stage.addingEvents(0, events == eventsPerCall ? callsInTurn : 1, events);
        std::vector<std::unique_ptr<Caller>> readers;
        readers.reserve(reads.size());
        for (const Calls &calls : reads)
            readers.push_back(std::make_unique<Caller>(calls));
        Caller adder(adds);
        const std::uintmax_t greatest = greatestLog(stage.period());
        const Served added = adder.stop();
        bool isSame = added.isSame;
        const std::optional<double> emptied = secondsUntilEmptyLog();
        for (const auto &reader : readers)
            isSame = reader->stop().isSame && isSame;
        const std::string beside = " beside 3 readers, addEvents of " + withCommas(events);
        stage.print({"greatest size of the log" + beside,
                     units::megabytes,
                     static_cast<double>(greatest),
                     {},
                     isSame,
                     withCommas(static_cast<std::uint32_t>(added.seconds.size())) + " calls"});
        stage.print({"empty log after the last write" + beside,
                     units::seconds,
                     emptied.value_or(longestEmptying),
                     {},
                     isSame,
                     emptied ? "" : "not even then"});
    }
}

} // namespace bench
