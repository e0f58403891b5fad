#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/output.h"
#include "tools/tarnel/pagetemplate.h"
#include "tools/tarnel/progress.h"
#include "tools/tarnel/reportdata.h"
#include "tools/tarnel/times.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include <cstdlib>
#include <unistd.h>

namespace tool {

namespace {

/// A file that takes the place of another when it is whole, and that nobody but its owner can read: a cache has names
/// and phone numbers in it.
class NewFile
{
public:
    explicit NewFile(std::filesystem::path path) : m_path(std::move(path)), m_temporary(m_path.native() + ".XXXXXX")
    {
        const int descriptor = ::mkstemp(m_temporary.data());
        if (descriptor < 0)
            fail();
        ::close(descriptor);
        m_stream.open(m_temporary, std::ios::binary | std::ios::trunc);
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile()
    {
        if (!m_temporary.empty())
            ::unlink(m_temporary.c_str());
    }

    [[nodiscard]] std::ostream &stream() { return m_stream; }

    void finish()
    {
        m_stream.close();
        if (!m_stream || ::rename(m_temporary.c_str(), m_path.c_str()) != 0)
            fail();
        m_temporary.clear();
    }

private:
    [[noreturn]] void fail() const
    {
        const std::string reason = std::generic_category().message(errno);
        throw Obstacle(fmt::format("{} cannot be written: {}", m_path.string(), reason),
                       "name a file that you may write: tarnel report -o /tmp/report.html");
    }

    std::filesystem::path m_path;
    std::string m_temporary;
    std::ofstream m_stream;
};

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
    file.stream() << page.substr(0, place);
    ReportSummary summary;
    {
        Progress progress;
        summary = writeReportData(file.stream(), cache, options.choice,
                                  [&](std::string_view step) { progress.show(fmt::format("checking {}", step)); });
    }
    file.stream() << page.substr(place + placeOfData.size());
    cache.assertUnchanged();
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
