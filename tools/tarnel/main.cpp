#include "tools/tarnel/command.h"
#include "tools/tarnel/output.h"

#include <fmt/format.h>
#include <tarnel/diagnostics.h>

#include <SQLiteCpp/Exception.h>

#include <QtGlobal>

#include <clocale>
#include <csignal>
#include <system_error>

namespace tool {

namespace {

constexpr const char *description = "Says what is in a CacheDb, and why a client shows it as it does.";
constexpr const char *footer = R"(
Nothing here changes the cache: not the file, nor what lies beside it. A cache
that a client has open may be looked at.

Exit status: 0 all went well, 3 it could not be done, 64 a mistake in the
command. `check`: 0 the file is sound, 1 suspicious, 2 broken.

`tarnel COMMAND --help` says more about a command; `man tarnel` has it all.)";

int report(const std::string &reason, const std::string &advice)
{
    const std::string line = advice.empty() ? "" : fmt::format("tarnel: {}\n", advice);
    fmt::print(stderr, "tarnel: {}\n{}", reason, line);
    return status::failed;
}

/// Runs what the command line says.
int run(int argc, char **argv)
{
    Shared shared;
    CLI::App app(description, "tarnel");
    app.footer(footer);
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag(
        "--version", fmt::format("tarnel {}.{}.{}", TARNEL_VERSION_MAJOR, TARNEL_VERSION_MINOR, TARNEL_VERSION_PATCH));
    app.add_flag("--json", shared.isJson, "Print JSON, for programs");
    app.add_flag("--unix-time", shared.isUnixTime, "Show times as dates in UTC: they are seconds since 1970");
    // In the order of the help.
    addInfo(app, shared);
    addCheck(app, shared);
    addShow(app, shared);
    addEvents(app, shared);
    addStats(app, shared);
    addReport(app, shared);
    addExport(app, shared);
    addImport(app, shared);
    addRedact(app, shared);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &asked) { // For help, or for the version.
        return app.exit(asked);
    } catch (const CLI::Error &mistake) {
        app.exit(mistake);
        return status::misused;
    }
    output::finish();
    return shared.status;
}

int runSafely(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const output::Closed &) { // Whoever reads it has seen enough.
        return status::sound;
    } catch (const Obstacle &obstacle) {
        return report(obstacle.what(), obstacle.advice());
    } catch (const SQLite::Exception &failure) {
        return report(failure.what(), "`tarnel check` says what is wrong with the file");
    } catch (const std::exception &failure) {
        return report(failure.what(), "");
    }
}

} // namespace

} // namespace tool

int main(int argc, char **argv)
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c)
    // The library logs for its clients; what fails here is told otherwise.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return tool::runSafely(argc, argv);
}
