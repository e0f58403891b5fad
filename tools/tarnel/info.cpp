#include "storage/database.h"
#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/launchverdict.h"
#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/times.h"

#include <tarnel/diagnostics.h>

namespace tool {

namespace {

/// How the journal of a cache stands, and how it was read here.
struct JournalState {
    std::string name;
    std::string explanation;
};

JournalState journalState(const Place &place)
{
    if (place.isInUse && place.logBytes > 0)
        return {"log", "the log of the client that has it open"};
    if (place.isInUse)
        return {"in use", "no log: all that was written is in the file"};
    if (place.logBytes > 0)
        return {"left log", "a log that a killed client has left; the next launch takes it in"};
    if (place.journalBytes > 0)
        return {"left journal", "a journal that a killed client has left; the next launch undoes its last write"};
    return {"none", "the file is complete in itself"};
}

std::string_view readingOf(const CacheFile &cache)
{
    switch (cache.reading()) {
    case CacheFile::Reading::InPlace:
        return "in place";
    case CacheFile::Reading::LiveCopy:
        return "from a copy made beside the client";
    case CacheFile::Reading::RecoveredCopy:
        return "from a copy, with what the client has left taken in";
    case CacheFile::Reading::Live:
        break;
    }
    return "beside the client";
}

/// The number that a question finds; null also where it cannot be asked.
Json numberOrNull(lib::Connection &connection, const std::string &sql)
{
    try {
        const auto found = number(connection, sql);
        return found ? Json(*found) : Json();
    } catch (const Obstacle &) {
        return {};
    }
}

/// What there is to say about a cache, for people and for programs alike.
Json describe(CacheFile &cache)
{
    const Place &place = cache.place();
    const LaunchVerdict verdict = launchVerdict(cache);
    lib::Connection &connection = cache.connection();
    Json info;
    info["file"] = place.file.string();
    info["bytes"] = place.bytes;
    info["log_bytes"] = place.logBytes;
    info["shared_memory_bytes"] = place.memoryBytes;
    info["journal_bytes"] = place.journalBytes;
    info["journal"] = journalState(place).name;
    info["in_use"] = place.isInUse;
    info["read"] = readingOf(cache);
    std::optional<lib::Text> text;
    info["version"] = nullptr;
    if (lib::Database::getVersion(connection, text) && text)
        info["version"] = tarnel::utf8(text->view());
    text.reset();
    info["server"] = nullptr;
    if (lib::Database::getServerIp(connection, text) && text)
        info["server"] = tarnel::utf8(text->view());
    info["tables"] = Json::object();
    forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
        info["tables"][std::string(lib::Schema<Record>::table)] =
            numberOrNull(connection, fmt::format("SELECT count(*) FROM {}", lib::Schema<Record>::table));
    });
    const std::string time = lib::columnOf(&lib::Event::time);
    for (const auto &[name, end] : {std::pair("first_event", "min"), std::pair("last_event", "max")})
        info[name] =
            numberOrNull(connection, fmt::format("SELECT {}({}) FROM {}", end, time, lib::Schema<lib::Event>::table));
    info["launch"] = {{"code", verdict.code},
                      {"name", tarnelCodeName(verdict.code)},
                      {"reason", verdict.reason},
                      {"advice", tarnelCodeAdvice(verdict.code)}};
    return info;
}

std::string said(const Json &value)
{
    return value.is_string() ? output::safe(value.get<std::string>()) : "none";
}

void writeInfo(const Json &info, const Place &place, bool isUnixTime)
{
    std::string size = output::size(place.bytes);
    if (place.logBytes > 0)
        size += fmt::format(", and {} in its log", output::size(place.logBytes));
    const auto time = [&](const char *key) { return timeText(info[key].get<std::int64_t>(), isUnixTime); };
    const bool isTimed = info["first_event"].is_number();
    const std::string events = isTimed ? fmt::format("{} to {}", time("first_event"), time("last_event")) : "none";
    const Json &launch = info["launch"];
    const bool isKept = launch["code"] == TARNEL_SUCCESS;
    output::writePairs({
        {"file", output::safe(place.file.string())},
        {"size", size},
        {"journal", journalState(place).explanation},
        {"open", place.isInUse ? "yes, a client has it open" : "no"},
        {"read", info["read"].get<std::string>()},
        {"version", said(info["version"])},
        {"server", said(info["server"])},
        {"events", events},
        {"launch",
         output::styled(fmt::fg(isKept ? fmt::terminal_color::green : fmt::terminal_color::red),
                        fmt::format("{} {}", launch["code"].get<unsigned int>(), launch["name"].get<std::string>()))},
        {"", launch["reason"].get<std::string>()},
    });
    if (!isKept)
        output::print("\n{}\n", launch["advice"].get<std::string>());
    output::write("\n");
    std::vector<std::pair<std::string, std::string>> rows;
    for (const auto &[table, count] : info["tables"].items()) {
        const std::string shown = count.is_number() ? output::grouped(count.get<std::uint64_t>()) : "cannot be read";
        rows.emplace_back(table, output::rightAligned(shown, 14));
    }
    output::writePairs(rows);
}

void runInfo(Shared &shared)
{
    CacheFile cache(shared.file);
    const Json info = describe(cache);
    cache.assertUnchanged();
    if (shared.isJson)
        output::writeJson(info);
    else
        writeInfo(info, cache.place(), shared.isUnixTime);
}

} // namespace

void addInfo(CLI::App &app, Shared &shared)
{
    CLI::App *const command =
        app.add_subcommand("info", "Version, tables, times, sizes, and what a launch would make of the file now");
    addFile(*command, shared);
    command->callback([&shared] { runInfo(shared); });
}

} // namespace tool
