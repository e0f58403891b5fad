#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/times.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>

namespace tool {

namespace {

constexpr std::int64_t secondsOfHour = 3600;
constexpr std::int64_t secondsOfDay = 86400;
constexpr std::size_t barWidth = 40;

struct StatsOptions {
    std::string pruneAt;
    std::size_t top = 10;
};

/// How often each value occurs.
struct Counts {
    std::uint64_t events = 0;
    std::uint64_t withoutTime = 0;
    std::array<std::uint64_t, 24> ofHour{};
    std::map<std::int64_t, std::uint64_t> ofDay; ///< By the day's first second.
    std::map<std::int64_t, std::uint64_t> ofClass;
    std::unordered_map<std::int64_t, std::uint64_t> ofDevice;
};

/// What pruning at a date would do.
struct Pruning {
    std::int64_t date = 0;
    std::int64_t removed = 0;
    std::int64_t keptFlagged = 0;
    std::int64_t keptUnsaid = 0; ///< Those that do not say whether they carry the flag.
};

Counts countEvents(lib::Connection &connection)
{
    using lib::columnOf;
    using lib::Event;
    Counts counts;
    Query rows(connection, fmt::format("SELECT {},{},{} FROM {}", columnOf(&Event::time), columnOf(&Event::eventClass),
                                       columnOf(&Event::deviceId), lib::Schema<Event>::table));
    for (; rows.next(); ++counts.events) {
        if (rows.isNull(0)) {
            ++counts.withoutTime;
        } else {
            const std::int64_t day = rows.number(0) / secondsOfDay * secondsOfDay;
            const std::int64_t hour = (rows.number(0) - day) / secondsOfHour;
            ++counts.ofHour.at(static_cast<std::size_t>(std::clamp<std::int64_t>(hour, 0, 23)));
            ++counts.ofDay[day];
        }
        if (!rows.isNull(1))
            ++counts.ofClass[rows.number(1)];
        if (!rows.isNull(2))
            ++counts.ofDevice[rows.number(2)];
    }
    return counts;
}

Pruning prune(lib::Connection &connection, std::int64_t date)
{
    const std::string affect = lib::columnOf(&lib::Event::affect);
    Query row(connection,
              fmt::format("SELECT count({0} = 0 OR NULL), count({0} <> 0 OR NULL), count({0} IS NULL OR NULL) "
                          "FROM {1} WHERE {2} <= ?",
                          affect, lib::Schema<lib::Event>::table, lib::columnOf(&lib::Event::time)),
              {date});
    static_cast<void>(row.next());
    return {date, row.number(0), row.number(1), row.number(2)};
}

/// The devices with the most events, the busiest first.
std::vector<std::pair<std::int64_t, std::uint64_t>> busiest(const Counts &counts, std::size_t most)
{
    std::vector<std::pair<std::int64_t, std::uint64_t>> devices(counts.ofDevice.begin(), counts.ofDevice.end());
    std::ranges::sort(devices, [](const auto &left, const auto &right) {
        return std::pair(right.second, left.first) < std::pair(left.second, right.first);
    });
    devices.resize(std::min(devices.size(), most));
    return devices;
}

Json statsJson(const Counts &counts, const std::optional<Pruning> &pruning, std::size_t top)
{
    const auto list = [](const auto &rows, const char *name) {
        Json json = Json::array();
        for (const auto &[value, events] : rows)
            json.push_back({{name, value}, {"events", events}});
        return json;
    };
    Json json{{"events", counts.events},
              {"without_time", counts.withoutTime},
              {"devices_with_events", counts.ofDevice.size()},
              {"hours", counts.ofHour},
              {"days", list(counts.ofDay, "from")},
              {"classes", list(counts.ofClass, "class")},
              {"busiest_devices", list(busiest(counts, top), "device")}};
    if (pruning)
        json["pruning"] = {{"date", pruning->date},
                           {"removes", pruning->removed},
                           {"keeps_affect", pruning->keptFlagged},
                           {"keeps_unsaid", pruning->keptUnsaid}};
    return json;
}

template <class Rows, class Name>
void writeBars(const std::string &heading, const Rows &rows, const Name &name)
{
    std::uint64_t most = 1;
    for (const auto &[value, events] : rows)
        most = std::max(most, events);
    output::Table table({heading, "events", ""});
    for (const auto &[value, events] : rows) {
        std::string bar;
        for (std::uint64_t i = 0; i < events * barWidth / most; ++i)
            bar += "█";
        table.add({name(value), output::grouped(events), bar});
    }
    table.write();
    output::write("\n");
}

void writeStats(const Counts &counts, const std::optional<Pruning> &pruning, std::size_t top, bool isUnixTime)
{
    const auto number = [](std::int64_t value) { return std::to_string(value); };
    std::vector<std::pair<std::int64_t, std::uint64_t>> hours;
    for (const std::uint64_t events : counts.ofHour)
        hours.emplace_back(hours.size(), events);
    writeBars("hour", hours, [](std::int64_t hour) { return fmt::format("{:02}", hour); });
    writeBars("day", counts.ofDay,
              [&](std::int64_t day) { return timeText(day, isUnixTime).substr(0, isUnixTime ? 10 : 20); });
    writeBars("class", counts.ofClass, number);
    writeBars("device", busiest(counts, top), number);
    output::print("{} events of {} devices, {} without a time\n", output::grouped(counts.events),
                  output::grouped(counts.ofDevice.size()), output::grouped(counts.withoutTime));
    if (pruning)
        output::print("Pruning at {} would remove {}; {} stay with the affect flag, and {} that do not say it.\n",
                      timeText(pruning->date, isUnixTime), pruning->removed, pruning->keptFlagged, pruning->keptUnsaid);
}

void runStats(Shared &shared, const StatsOptions &options)
{
    CacheFile cache(shared.file);
    cache.requireSound();
    const Counts counts = countEvents(cache.connection());
    std::optional<Pruning> pruning;
    if (!options.pruneAt.empty())
        pruning = prune(cache.connection(), parseTime(options.pruneAt));
    cache.assertUnchanged();
    if (shared.isJson)
        output::writeJson(statsJson(counts, pruning, options.top));
    else
        writeStats(counts, pruning, options.top, shared.isUnixTime);
}

} // namespace

void addStats(CLI::App &app, Shared &shared)
{
    const auto options = std::make_shared<StatsOptions>();
    CLI::App *const command =
        app.add_subcommand("stats", "Events per hour of the day, day, class and device; what pruning would remove");
    addFile(*command, shared);
    command->add_option("--prune", options->pruneAt, "Say what pruning at this time would remove");
    command->add_option("--top", options->top, "So many of the busiest devices")->capture_default_str();
    command->callback([&shared, options] { runStats(shared, *options); });
}

} // namespace tool
