#include "storage/database.h"
#include "storage/tables.h"
#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/launchverdict.h"
#include "tools/tarnel/output.h"
#include "tools/tarnel/query.h"

#include <tarnel/diagnostics.h>

namespace tool {

namespace {

namespace lib = tarnelLib::controller;
using output::Json;

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
        info["version"] = utf8(*text);
    text.reset();
    info["server"] = nullptr;
    if (lib::Database::getServerIp(connection, text) && text)
        info["server"] = utf8(*text);
    info["tables"] = Json::object();
    const auto count = [&]<class Record>(const lib::KindTable<Record> &) {
        const auto rows = number(connection, fmt::format("SELECT count(*) FROM {}", lib::Schema<Record>::table));
        info["tables"][std::string(lib::Schema<Record>::table)] = rows ? Json(*rows) : Json();
    };
    std::apply([&](const auto &...table) { (count(table), ...); }, lib::tables);
    const std::string time = lib::columnOf(&lib::Event::time);
    for (const char *end : {"min", "max"}) {
        const auto found =
            number(connection, fmt::format("SELECT {}({}) FROM {}", end, time, lib::Schema<lib::Event>::table));
        info[std::string_view(end) == "min" ? "first_event" : "last_event"] = found ? Json(*found) : Json();
    }
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

void writeForPeople(const Json &info, const Place &place)
{
    std::string size = output::size(place.bytes);
    if (place.logBytes > 0)
        size += fmt::format(", and {} in its log", output::size(place.logBytes));
    std::string events = "none with a time";
    if (info["first_event"].is_number())
        events = fmt::format("{} to {} UTC ({} to {})", output::date(info["first_event"].get<std::int64_t>()),
                             output::date(info["last_event"].get<std::int64_t>()),
                             info["first_event"].get<std::int64_t>(), info["last_event"].get<std::int64_t>());
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
        {"", isKept ? "" : launch["advice"].get<std::string>()},
    });
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
        writeForPeople(info, cache.place());
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
