#include "databasefile.h"
#include "exports.h"

#include <QString>

#include <cctype>
#include <mutex>
#include <regex>
#include <sstream>

/// What a failing database looks like from outside: codes, log lines, and nothing half-stored.
namespace client {

namespace {

using Lines = std::vector<std::string>;

/// Qt's debug log since it was last looked at.
Lines takeLog()
{
    static std::mutex mutex;
    static Lines lines;
    const std::lock_guard lock(mutex);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &line) {
        const std::lock_guard linesLock(mutex);
        if (type == QtDebugMsg)
            lines.push_back(line.toStdString());
    });
    return std::exchange(lines, {});
}

/// What is forbidden on connections that are opened now: an action, and the table that it is about.
std::pair<int, std::string> forbidden;

int forbid(sqlite3 *connection, char **, const void *)
{
    const auto decide = [](void *, int action, const char *table, const char *, const char *, const char *) {
        return action == forbidden.first && table == forbidden.second ? SQLITE_DENY : SQLITE_OK;
    };
    return sqlite3_set_authorizer(connection, decide, nullptr);
}

/// Launches the cache on a file that it cannot make, and gives the result.
std::string launchForbidden(const std::string &verb, const std::string &table)
{
    forbidden = {verb == "create" ? SQLITE_CREATE_TABLE : SQLITE_INSERT, table};
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&forbid));
    const RunningCache cache;
    sqlite3_reset_auto_extension();
    return std::to_string(getLaunchCacheResult());
}

/// Calls a function on a file that holds a record of each kind, and of which a table fails.
std::string callBroken(const std::string &function, const std::string &verb, const std::string &table)
{
    const RunningCache cache;
    addOneOfEverything();
    if (std::isupper(verb[0]) != 0)
        ask(verb + " " + table);
    else
        ask("CREATE TRIGGER refusal BEFORE " + verb + " ON " + table + " BEGIN SELECT RAISE(ABORT, 'отказ'); END");
    const std::string before = content();
    takeLog();
    const std::string answer = exported(function).callWith(1);
    if (answer == "9") {
        EXPECT_EQ(content(), before);
        EXPECT_EQ(ask("BEGIN IMMEDIATE"), "") << "nothing is held any more";
    }
    return answer;
}

} // namespace

class Failures : public testing::TestWithParam<Case>
{
};

TEST_P(Failures, haveTheirCodesAndLines)
{
    const std::regex pattern(R"((.*) \| (\w+) (.*) \| (\d) ([^|]*?)(?: \| (.*))?)");
    std::smatch row;
    for (const std::string &line : GetParam().lines) {
        ASSERT_TRUE(std::regex_match(line, row, pattern)) << line;
        std::istringstream functions(row[1]);
        for (std::string function; functions >> function;) {
            SCOPED_TRACE(function + " in " + line);
            const TemporaryDirectory directory;
            takeLog();
            const bool isLaunch = function == "launchCache";
            EXPECT_EQ(isLaunch ? launchForbidden(row[2], row[3]) : callBroken(function, row[2], row[3]), row[4]);
            const Lines lines = takeLog();
            const std::string text = row[6].matched || lines.size() < 2 ? row[6].str() : lines[1];
            const bool isBatch = function.starts_with("add") && row[5].str().starts_with("add ");
            EXPECT_EQ(lines, (Lines{isBatch ? "execute batch error" : "execute error", text, row[5], text}));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Failures, testing::ValuesIn(readCases("failures.txt")),
                         testing::PrintToStringParamName());

TEST(Failures, areListedOfEveryFunction)
{
    std::string listed;
    for (const Case &each : readCases("failures.txt")) {
        for (const std::string &line : each.lines)
            listed.append(" ").append(line, 0, line.find('|'));
    }
    for (const Export &function : exports())
        EXPECT_NE(listed.find(" " + function.name + " "), std::string::npos) << function.name;
}

} // namespace client
