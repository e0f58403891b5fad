#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/newfile.h"
#include "tools/tarnel/output.h"
#include "tools/tarnel/pagetemplate.h"
#include "tools/tarnel/progress.h"
#include "tools/tarnel/reportdata.h"
#include "tools/tarnel/times.h"

#include <fstream>
#include <system_error>

namespace tool {

namespace {

struct ReportOptions {
    std::filesystem::path output = "report.html";
    ReportChoice choice;
    std::string from;
    std::string to;
};

void runReport(const Shared &shared, ReportOptions options)
{
    if (!options.from.empty())
        options.choice.from = parseTime(options.from);
    if (!options.to.empty())
        options.choice.to = parseTime(options.to);
    const std::string_view page = pageTemplate();
    const std::size_t place = page.find(placeOfData);
    if (place == std::string_view::npos)
        throw Obstacle(
            "this tarnel was built without the page of the report: Node.js, npm or their registry was not at hand",
            "install the packages nodejs and npm, and build it again");
    CacheFile cache(shared.file);
    cache.requireSound();
    std::error_code error;
    if (std::filesystem::equivalent(options.output, cache.place().file, error))
        throw Obstacle("the report would replace the cache", "name another file: tarnel report -o report.html");
    NewFile file(options.output);
    std::ofstream stream(file.path(), std::ios::binary);
    stream << page.substr(0, place);
    ReportSummary summary;
    {
        Progress progress;
        summary = writeReportData(stream, cache, options.choice,
                                  [&](std::string_view step) { progress.show(fmt::format("checking {}", step)); });
    }
    stream << page.substr(place + placeOfData.size());
    cache.assertUnchanged();
    stream.close();
    if (!stream)
        throw Obstacle(fmt::format("{} cannot be written", options.output.string()), "the disk is full, perhaps");
    file.finish();
    if (shared.isJson) {
        output::writeJson(
            {{"report", options.output.string()}, {"events", summary.events}, {"limits", summary.limits}});
        return;
    }
    output::print("{}: {} events; open it in a browser\n", output::safe(options.output.string()),
                  output::grouped(summary.events));
    for (const std::string &limit : summary.limits)
        output::print("{}\n", limit);
}

} // namespace

void addReport(CLI::App &app, Shared &shared)
{
    CLI::App *const command =
        app.add_subcommand("report", "One page for a browser, with all that is in the cache; it needs no network");
    addFile(*command, shared);
    const auto options = std::make_shared<ReportOptions>();
    command->add_option("-o,--output", options->output, "Where the page goes")->capture_default_str();
    command->add_option("--last", options->choice.last, "At most so many events, the latest of them")
        ->check(CLI::Range(std::int64_t{1}, mostEvents))
        ->capture_default_str();
    command->add_option("--from", options->from, "Events from this time on: a number, or a date in UTC");
    command->add_option("--to", options->to, "Events up to this time");
    command->add_flag("--redact", options->choice.isRedacted, "Mask texts, phones and coordinates");
    command->callback([&shared, options] { runReport(shared, *options); });
}

} // namespace tool
