#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <algorithm>
#include <cctype>

/// What a failing database looks like from outside: codes, log lines, and nothing half-stored.
namespace client {

namespace {

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
    for (const Step &step : stepsIn(GetParam())) {
        if (step.verb == "commit") // Which the tests with a disk in their hands make fail.
            continue;
        SCOPED_TRACE(step.function + ": " + step.verb + ' ' + step.table);
        const TemporaryDirectory directory;
        takeLog();
        const bool isLaunch = step.function == "launchCache";
        EXPECT_EQ(isLaunch ? launchForbidden(step.verb, step.table) : callBroken(step.function, step.verb, step.table),
                  step.code);
        expectLogOf(step, step.text);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Failures, testing::ValuesIn(readCases("failures.txt")),
                         testing::PrintToStringParamName());

TEST(Failures, withoutADatabaseOrTablesAreThoseOfTheFirstStep)
{
    const std::tuple<const char *, unsigned int, const char *> findings[] = {
        {"mkdir CacheDb", TARNEL_DATABASE_UNAVAILABLE, "Driver not loaded Driver not loaded"},
        {"echo garbage >CacheDb", TARNEL_DATABASE_RECREATED_VERSION_MISMATCH, ""}};
    for (const auto &[command, result, text] : findings) {
        const TemporaryDirectory directory;
        ASSERT_EQ(std::system(command), 0);
        const RunningCache cache;
        EXPECT_EQ(getLaunchCacheResult(), result);
        takeLog();
        for (const Export &function : exports()) {
            SCOPED_TRACE(function.name);
            const std::vector<Step> steps = stepsOf(function.name);
            ASSERT_FALSE(steps.empty()) << "every function is listed";
            EXPECT_EQ(function.callWith(1), steps.front().code);
            expectLogOf(steps.front(), text);
        }
    }
}

/// What would be written then is lost, and nobody could know.
TEST(Failures, areAllWritesWhileTheFileIsNotAtItsPlace)
{
    for (const std::string verb : {"mv CacheDb moved", "rm CacheDb"}) {
        SCOPED_TRACE(verb);
        const TemporaryDirectory directory;
        const RunningCache cache;
        addOneOfEverything();
        const std::string before = content();
        ASSERT_EQ(std::system(verb.c_str()), 0);
        takeLog();
        for (const Export &function : exports()) {
            SCOPED_TRACE(function.name);
            const std::string answer = function.callWith(1);
            if (function.isRead()) {
                EXPECT_EQ(answer[0], '0');
                continue;
            }
            const std::vector<Step> steps = stepsOf(function.name);
            EXPECT_EQ(answer, "9");
            EXPECT_NE(expectLogOf(*std::ranges::find(steps, "9", &Step::code)).find("moved or deleted"),
                      std::string::npos);
        }
        if (verb.starts_with("mv")) {
            std::filesystem::rename("moved", "CacheDb");
            EXPECT_EQ(content(), before);
            addOneOfEverything();
        }
    }
}

} // namespace client
