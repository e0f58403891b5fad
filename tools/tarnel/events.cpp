#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/eventquery.h"
#include "tools/tarnel/launchverdict.h"
#include "tools/tarnel/times.h"

#include <chrono>
#include <thread>

namespace tool {

namespace {

constexpr std::chrono::milliseconds betweenLooks(500);
constexpr std::int64_t lastBeforeFollowing = 10;

struct EventsOptions {
    EventFilter filter;
    std::string from;
    std::string to;
    std::string site;
    bool isFollowing = false;
};

/// One column of the list: under a heading, members of which the first that is there is shown.
struct Column {
    std::string_view heading;
    std::size_t width;
    std::vector<std::string_view> keys;
};

const std::vector<Column> &columns()
{
    static const std::vector<Column> all = {
        {"time", 19, {"time"}},
        {"id", 10, {"id"}},
        {"class", 5, {"class"}},
        {"device", 10, {"device"}},
        {"account", 8, {"device_account"}},
        {"section", 16, {"section_name", "section"}},
        {"zone", 16, {"zone_name", "zone"}},
        {"operator", 16, {"operator_name", "operator_id"}},
        {"domain", 12, {"domain_name"}},
        {"data", 40, {"data"}},
    };
    return all;
}

std::string cell(const Json &event, const Column &column, bool isUnixTime)
{
    for (const std::string_view key : column.keys) {
        const auto found = event.find(key);
        if (found == event.end())
            continue;
        if (key == "time")
            return timeText(found->get<std::int64_t>(), isUnixTime);
        return found->is_string() ? output::safe(found->get<std::string>(), column.width) : found->dump();
    }
    return {};
}

void writeLine(const std::string &line)
{
    output::print("{}\n", line.substr(0, line.find_last_not_of(' ') + 1));
}

void writeHeadings()
{
    std::string line = "  ";
    for (const Column &column : columns())
        line += output::padded(column.heading, column.width) + "  ";
    writeLine(output::styled(fmt::emphasis::bold, line));
}

void writeEvent(const Json &event, bool isUnixTime)
{
    const bool isHidden = event.contains("hidden");
    const bool isAffecting = event.contains("affect") && event["affect"] == 1;
    std::string line = isHidden ? "- " : isAffecting ? "! " : "  ";
    for (const Column &column : columns())
        line += output::padded(cell(event, column, isUnixTime), column.width) + "  ";
    if (isHidden)
        line = output::styled(fmt::emphasis::faint, line);
    else if (isAffecting)
        line = output::styled(fmt::fg(fmt::terminal_color::red), line);
    writeLine(line);
}

std::uint64_t writeEvents(CacheFile &cache, const EventFilter &filter, const Shared &shared)
{
    std::uint64_t count = 0;
    for (EventQuery query(cache.connection(), filter); query.next(); ++count) {
        if (shared.isJson)
            output::writeJson(query.event(), false);
        else
            writeEvent(query.event(), shared.isUnixTime);
    }
    return count;
}

/// Waits until something was written; a cache that is being made anew is waited for.
Place waitForChange(const Place &seen)
{
    while (true) {
        std::this_thread::sleep_for(betweenLooks);
        std::error_code error;
        if (!std::filesystem::exists(seen.file, error))
            continue;
        if (Place now(seen.file); !now.isSameAs(seen))
            return now;
    }
}

/// Writes what is stored from now on. Each look is a short one, so that it may go without a copy.
void follow(Place seen, std::int64_t lastRow, EventFilter filter, const Shared &shared)
{
    filter.last.reset();
    while (true) {
        output::flush();
        const Place now = waitForChange(seen);
        CacheFile cache(now.file, CacheFile::Look::Short);
        if (launchVerdict(cache).code == TARNEL_SUCCESS) {
            const std::int64_t row = lastEventRow(cache.connection());
            // The numbers begin again in another file, and those of the last rows come again once these are deleted.
            filter.after = now.number != seen.number ? 0 : std::min(lastRow, row);
            writeEvents(cache, filter, shared);
            lastRow = row;
        }
        seen = now;
    }
}

void runEvents(Shared &shared, EventsOptions options)
{
    if (!options.site.empty())
        throw Obstacle("a CacheDb does not say which devices a site has: clients store them with the site, and the "
                       "link is not kept",
                       "name a device: tarnel events --device ID");
    EventFilter &filter = options.filter;
    if (!options.from.empty())
        filter.from = parseTime(options.from);
    if (!options.to.empty())
        filter.to = parseTime(options.to);
    if (options.isFollowing && !filter.last)
        filter.last = lastBeforeFollowing;
    std::optional<Place> seen;
    std::int64_t lastRow = 0;
    {
        CacheFile cache(shared.file);
        cache.requireSound();
        if (!shared.isJson)
            writeHeadings();
        const std::uint64_t count = writeEvents(cache, filter, shared);
        if (count == 0 && !shared.isJson && !options.isFollowing)
            output::write("no such events\n");
        seen = cache.place();
        lastRow = lastEventRow(cache.connection());
        if (!options.isFollowing)
            cache.assertUnchanged();
    }
    if (options.isFollowing)
        follow(*seen, lastRow, filter, shared);
}

} // namespace

void addEvents(CLI::App &app, Shared &shared)
{
    const auto options = std::make_shared<EventsOptions>();
    CLI::App *const command = app.add_subcommand("events", "The history, with the names of what it is about");
    addFile(*command, shared);
    EventFilter &filter = options->filter;
    command->add_option("--from", options->from, "Those from this time on: a number, or a date in UTC");
    command->add_option("--to", options->to, "Those up to this time");
    command->add_option("--device", filter.device, "Those of a device");
    command->add_option("--class", filter.eventClass, "Those of a class");
    command->add_flag("--affect", filter.isAffecting, "Those with the affect flag, which pruning leaves (marked !)");
    command->add_flag("--hidden", filter.isHidden, "Those that a client does not list: their device is unknown (-)");
    command->add_option("--last", filter.last, "So many, the latest of them")->check(CLI::Range(1, 1000000000));
    command->add_flag("-F,--follow", options->isFollowing, "Wait for more, and list them as they are stored");
    command->add_option("--site", options->site)->group("");
    command->callback([&shared, options] { runEvents(shared, *options); });
}

} // namespace tool
