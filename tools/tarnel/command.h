#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <stdexcept>
#include <string>

/// The subcommands. Each has a file of its own, which bears its name, and one function, which adds it to the command
/// line: `main.cpp` calls them all.
namespace tool {

/// With what the tool ends.
namespace status {
constexpr int sound = 0;      ///< All went well; of a check: the file is sound.
constexpr int suspicious = 1; ///< Of a check: the file can be used, and something in it is odd.
constexpr int broken = 2;     ///< Of a check: a client cannot use the file, or not all of it.
constexpr int failed = 3;     ///< It could not be done.
constexpr int misused = 64;   ///< The command line has a mistake.
} // namespace status

/// What the subcommands share.
struct Shared {
    bool isJson = false;                    ///< JSON is asked for, instead of what people read.
    bool isUnixTime = false;                ///< Times are seconds since 1970, and are shown as dates.
    std::filesystem::path file = "CacheDb"; ///< The cache, or the directory in which it is.
    int status = status::sound;             ///< What the subcommand sets for the end.
};

/// Why something could not be done, and what to do about it.
class Obstacle : public std::runtime_error
{
public:
    Obstacle(const std::string &reason, std::string advice) : runtime_error(reason), m_advice(std::move(advice)) {}

    [[nodiscard]] const std::string &advice() const { return m_advice; }

private:
    std::string m_advice;
};

/// Lets a subcommand take the cache as its first argument without a name.
inline void addFile(CLI::App &command, Shared &shared)
{
    command.add_option("FILE", shared.file, "The cache, or the directory in which it is")->capture_default_str();
}

void addCheck(CLI::App &app, Shared &shared);
void addEvents(CLI::App &app, Shared &shared);
void addExport(CLI::App &app, Shared &shared);
void addImport(CLI::App &app, Shared &shared);
void addInfo(CLI::App &app, Shared &shared);
void addRedact(CLI::App &app, Shared &shared);
void addReport(CLI::App &app, Shared &shared);
void addShow(CLI::App &app, Shared &shared);
void addStats(CLI::App &app, Shared &shared);

} // namespace tool
