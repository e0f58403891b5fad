#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/findings.h"
#include "tools/tarnel/output.h"
#include "tools/tarnel/progress.h"

namespace tool {

namespace {

using output::Json;

/// The word for what a check has come to.
std::string_view verdictOf(const std::vector<Finding> &findings)
{
    const Severity worst = worstOf(findings);
    return worst == Severity::Note ? "sound" : nameOf(worst);
}

fmt::text_style styleOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return fmt::fg(fmt::terminal_color::blue);
    case Severity::Suspicious:
        return fmt::fg(fmt::terminal_color::yellow);
    case Severity::Broken:
        break;
    }
    return fmt::fg(fmt::terminal_color::red);
}

Json findingsJson(const std::vector<Finding> &findings)
{
    Json list = Json::array();
    for (const Finding &finding : findings)
        list.push_back(toJson(finding));
    return {{"verdict", verdictOf(findings)}, {"findings", list}};
}

void writeFindings(const std::vector<Finding> &findings)
{
    for (const Finding &finding : findings) {
        output::print("{} {} {}: {}\n",
                      output::styled(styleOf(finding.severity), fmt::format("{:10}", nameOf(finding.severity))),
                      output::grouped(finding.count), finding.subject, output::safe(finding.what));
        if (!finding.examples.empty())
            output::print("{:11}{}{}\n", "", fmt::join(finding.examples, ", "),
                          finding.count > finding.examples.size() ? ", …" : "");
    }
    output::print("{}\n", output::styled(styleOf(worstOf(findings)) | fmt::emphasis::bold, verdictOf(findings)));
}

void runCheck(Shared &shared)
{
    CacheFile cache(shared.file);
    std::vector<Finding> findings;
    {
        Progress progress;
        findings = check(cache, [&](std::string_view step) { progress.show(fmt::format("checking {}", step)); });
    }
    cache.assertUnchanged();
    if (shared.isJson)
        output::writeJson(findingsJson(findings));
    else
        writeFindings(findings);
    const Severity worst = worstOf(findings);
    if (worst != Severity::Note)
        shared.status = worst == Severity::Broken ? status::broken : status::suspicious;
}

} // namespace

void addCheck(CLI::App &app, Shared &shared)
{
    CLI::App *const command =
        app.add_subcommand("check", "What is wrong or odd, and what a client does not show of it");
    addFile(*command, shared);
    command->callback([&shared] { runCheck(shared); });
}

} // namespace tool
