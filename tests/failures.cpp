#include "failures.h"

#include <QString>

#include <algorithm>
#include <map>
#include <mutex>
#include <regex>
#include <sstream>

namespace client {

Lines takeLog(Log log)
{
    static std::mutex mutex;
    static std::map<Log, Lines> lines;
    const std::lock_guard lock(mutex);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &line) {
        std::this_thread::yield(); // Lets other threads' lines come between one thread's, if they can.
        const std::lock_guard linesLock(mutex);
        const bool isOfRequests = context.category == std::string_view("tarnel.requests");
        if (type == QtDebugMsg || isOfRequests)
            lines[isOfRequests ? Log::Requests : Log::Debug].push_back(line.toStdString());
    });
    return std::exchange(lines[log], {});
}

std::vector<Step> stepsIn(const Case &lines)
{
    static const std::regex pattern(R"((.*) \| (\w+)(?: (.*))? \| (\d) ([^|]*?)(?: \| (.*))?)");
    std::vector<Step> steps;
    for (const std::string &line : lines.lines) {
        std::smatch row;
        EXPECT_TRUE(std::regex_match(line, row, pattern)) << line;
        std::istringstream functions(row[1]);
        for (std::string function; functions >> function;)
            steps.push_back({function, row[2], row[3], row[4], row[5], row[6]});
    }
    return steps;
}

std::vector<Step> stepsOf(const std::string &function)
{
    std::vector<Step> all;
    for (const Case &each : readCases("failures.txt"))
        std::ranges::copy_if(stepsIn(each), std::back_inserter(all),
                             [&](const Step &step) { return step.function == function; });
    return all;
}

std::string expectLogOf(const std::vector<Step> &steps, const std::string &text)
{
    const Lines lines = takeLog();
    const std::string logged = lines.size() > 1 ? lines[1] : "";
    const std::string expected = text.empty() ? logged : text;
    std::vector<Lines> all;
    for (const Step &step : steps) {
        const bool isBatch = step.function.starts_with("add") && step.message.starts_with("add ");
        all.push_back({isBatch ? "execute batch error" : "execute error", expected, step.message, expected});
    }
    EXPECT_TRUE(std::ranges::find(all, lines) != all.end())
        << testing::PrintToString(lines) << " is none of " << testing::PrintToString(all);
    return logged;
}

} // namespace client
