#include "parsing/jsonreader.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/progress.h"
#include "tools/tarnel/records.h"

#include <tarnel/cache.hpp>

#include <csignal>
#include <fstream>
#include <iostream>

namespace tool {

namespace {

constexpr const char *progressFile = "CacheDb.imported";

struct ImportOptions {
    std::filesystem::path directory;
    std::filesystem::path lines = "-";
};

volatile std::sig_atomic_t isInterrupted = 0;

/// A line of an export.
struct Call {
    std::u16string name;
    std::u16string text; ///< The request, or the address of the server.
};

Call parse(const std::string &line)
{
    const std::u16string units = tarnel::utf16(line);
    lib::JsonReader json(units);
    Call call;
    if (json.type() == lib::JsonReader::Type::Object)
        json.readObject([&](std::u16string_view key) {
            if (key == u"call" && json.type() == lib::JsonReader::Type::String) {
                call.name = json.readText().view();
            } else if (key == u"text" && json.type() == lib::JsonReader::Type::String) {
                call.text = json.readText().view();
            } else if (key == u"request") {
                // As it stands: it may hold what only the library reads.
                const std::u16string_view request = json.rest();
                json.skip();
                call.text = request.substr(0, request.size() - json.rest().size());
            } else {
                json.skip();
            }
        });
    if (!json.isComplete() || call.name.empty())
        throw Obstacle(R"(it is no JSON object such as {"call":"addUsers","request":{"D":{...}}})",
                       "import what `tarnel export` has written");
    return call;
}

/// What a call has come to, without what it has handed out.
template <class Value>
tarnel::Result<void> outcome(const tarnel::Result<Value> &result)
{
    return {result.code(), result.reason()};
}

/// What a call comes to; nothing if there is no such call.
std::optional<tarnel::Result<void>> carryOut(const Call &call)
{
    const tarnel::Text text(call.text);
    std::optional<tarnel::Result<void>> result;
    const std::string name = tarnel::utf8(call.name);
    if (name == "setServerIp")
        result = tarnel::Result<void>(setServerIp(text.units(), text.length()));
    forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
        if constexpr (requires { typename lib::Schema<Record>::Api; }) {
            using Api = lib::ApiOf<Record>;
            const tarnel::Cache calls;
            if constexpr (requires { tarnel::Functions<Api>::add; }) {
                if (name == fmt::format("add{}", lib::Schema<Record>::table))
                    result = outcome(calls.add<Api>(text));
            }
            if constexpr (requires { tarnel::Functions<Api>::update; }) {
                if (name == fmt::format("update{}", kindName<Record>))
                    result = outcome(calls.update<Api>(text));
            }
            if constexpr (requires { tarnel::Functions<Api>::remove; }) {
                if (name == fmt::format("delete{}", kindName<Record>))
                    result = outcome(tarnel::Result<void>(tarnel::Functions<Api>::remove(text.units(), text.length())));
            }
        }
    });
    return result;
}

/// Carries out a line. Events of unknown devices and parts without an owner are stored as they were.
void importLine(const std::string &line)
{
    const std::optional<tarnel::Result<void>> result = carryOut(parse(line));
    if (!result)
        throw Obstacle("it asks for a call that is none of those that store records",
                       "import what `tarnel export` has written");
    if (!result->ok() && result->code() != TARNEL_NOT_FOUND && result->code() != TARNEL_PARENT_NOT_FOUND)
        throw Obstacle(result->reason(), "mend it, and type the same again: it goes on from there");
}

/// How many lines an earlier import has carried out; it leaves a note until it is complete.
std::uint64_t linesDone()
{
    std::uint64_t lines = 0;
    std::ifstream(progressFile) >> lines;
    return lines;
}

void noteLinesDone(std::uint64_t lines)
{
    // In place of the whole note at once: it may be read after a kill.
    const std::string part = fmt::format("{}.part", progressFile);
    std::ofstream(part) << lines << '\n';
    std::filesystem::rename(part, progressFile);
}

/// The lines, and how much of them has been read.
class Lines
{
public:
    explicit Lines(const std::filesystem::path &path)
    {
        if (path == "-")
            return;
        m_file.open(path);
        if (!m_file)
            throw Obstacle(fmt::format("{} cannot be read", path.string()), "name what `tarnel export` has written");
        if (std::filesystem::is_regular_file(path))
            m_size = std::filesystem::file_size(path);
    }

    bool next(std::string &line)
    {
        const bool isRead = static_cast<bool>(std::getline(m_file.is_open() ? m_file : std::cin, line));
        m_read += line.size() + 1;
        return isRead;
    }

    void show(Progress &progress, std::uint64_t number) const
    {
        if (m_size > 0)
            progress.show("importing", m_read, m_size);
        else
            progress.show(fmt::format("importing line {}", number));
    }

private:
    std::ifstream m_file;
    std::uint64_t m_size = 0;
    std::uint64_t m_read = 0;
};

void importAll(Lines &lines, std::uint64_t done)
{
    Progress progress;
    std::string line;
    for (std::uint64_t number = 1; lines.next(line); ++number) {
        if (isInterrupted != 0)
            throw Obstacle(fmt::format("interrupted before line {}", std::max(number, done + 1)),
                           "type the same again: it goes on there");
        if (number <= done || line.empty())
            continue;
        try {
            importLine(line);
        } catch (const Obstacle &obstacle) {
            throw Obstacle(fmt::format("line {}: {}", number, obstacle.what()), obstacle.advice());
        }
        noteLinesDone(number);
        lines.show(progress, number);
    }
}

void runImport(const ImportOptions &options)
{
    Lines lines(options.lines);
    std::error_code error;
    if (std::filesystem::create_directories(options.directory, error); !error)
        std::filesystem::current_path(options.directory, error);
    if (error)
        throw Obstacle(fmt::format("{} cannot be used: {}", options.directory.string(), error.message()),
                       "type the directory first, then the export: tarnel import new-cache export.jsonl");
    const std::uint64_t done = linesDone();
    if (done == 0 && !std::filesystem::exists(progressFile) && std::filesystem::exists("CacheDb"))
        throw Obstacle(fmt::format("{} has a CacheDb already", options.directory.string()),
                       "name an empty directory, or one in which an import was interrupted");
    noteLinesDone(done);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, [](int) { isInterrupted = 1; }); // NOLINT(cert-err33-c)
    tarnel::Cache cache;
    const auto launched = cache.start(std::chrono::seconds(30), tarnel::Recreated::Report);
    if (!launched.ok())
        throw Obstacle(fmt::format("no cache can be launched: {}", launched.reason()), "name another directory");
    importAll(lines, done);
    cache.stop();
    std::filesystem::remove(progressFile);
}

} // namespace

void addImport(CLI::App &app, Shared &)
{
    const auto options = std::make_shared<ImportOptions>();
    CLI::App *const command = app.add_subcommand(
        "import", "Make a cache of an export, through the library; one that was interrupted goes on");
    command->add_option("DIRECTORY", options->directory, "Where the new CacheDb is to be")->required();
    command->add_option("LINES", options->lines, "What `tarnel export` has written; - for the standard input")
        ->capture_default_str();
    command->callback([options] { runImport(*options); });
}

} // namespace tool
