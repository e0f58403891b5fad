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
        if (step.verb == "disk") // Which the tests with a disk in their hands make fail.
            continue;
        SCOPED_TRACE(step.function + ": " + step.verb + ' ' + step.table);
        const TemporaryDirectory directory;
        takeLog();
        const bool isLaunch = step.function == "launchCache";
        EXPECT_EQ(isLaunch ? launchForbidden(step.verb, step.table) : callBroken(step.function, step.verb, step.table),
                  step.code);
        expectLogOf({step}, step.text);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Failures, testing::ValuesIn(readCases("failures.txt")),
                         testing::PrintToStringParamName());

/// What would be written to a file that is not at its place is lost, and nobody could know.
TEST(Failures, withoutADatabaseOrTablesOrTheFileAreThoseOfTheFirstStep)
{
    // Commands before the launch and after it, its result, and what the log says of each call.
    constexpr const char *movedText = "the database file was moved or deleted while it was open";
    const std::tuple<const char *, const char *, unsigned int, const char *> findings[] = {
        {"mkdir CacheDb", "true", TARNEL_DATABASE_UNAVAILABLE, "Driver not loaded Driver not loaded"},
        {"mkdir CacheDb-wal", "true", TARNEL_DATABASE_UNAVAILABLE, "Driver not loaded Driver not loaded"},
        {"mkdir CacheDb-journal; echo garbage >CacheDb", "true", TARNEL_DATABASE_UNAVAILABLE,
         "Driver not loaded Driver not loaded"},
        {"echo garbage >CacheDb", "true", TARNEL_DATABASE_RECREATED_VERSION_MISMATCH, ""},
        {"true", "mv CacheDb moved", TARNEL_DATABASE_CREATED, movedText},
        {"true", "rm CacheDb", TARNEL_DATABASE_CREATED, movedText},
    };
    for (const auto &[before, after, result, text] : findings) {
        const TemporaryDirectory directory;
        ASSERT_EQ(std::system(before), 0);
        const RunningCache cache;
        ASSERT_EQ(getLaunchCacheResult(), result);
        const bool isReadWell = result == TARNEL_DATABASE_CREATED;
        if (isReadWell)
            addOneOfEverything();
        const std::string stored = isReadWell ? content() : "";
        ASSERT_EQ(std::system(after), 0);
        takeLog();
        for (const Export &function : exports()) {
            SCOPED_TRACE(function.name);
            std::vector<Step> steps = stepsOf(function.name);
            std::erase_if(steps, [&](const Step &step) { return isReadWell && step.code != "9"; });
            EXPECT_TRUE(!steps.empty() || function.isRead()) << "every function is listed";
            EXPECT_EQ(function.callWith(1).substr(0, 1), steps.empty() ? "0" : steps.front().code);
            if (!steps.empty())
                expectLogOf({steps.front()}, text);
        }
        if (std::filesystem::exists("moved")) {
            std::filesystem::rename("moved", "CacheDb");
            EXPECT_EQ(content(), stored);
            addOneOfEverything();
        }
    }
}

} // namespace client
