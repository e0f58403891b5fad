#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <tarnel/diagnostics.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace client {

using Diagnostics = DirectoryTest;

TEST_F(Diagnostics, reasonsOfArgumentsNameTheArgument)
{
    const RunningCache cache;
    api::User *none = nullptr;
    api::User user{};
    api::User *taken = &user;
    unsigned int count = 0;
    const unsigned short text[] = {u'n'};
    const std::pair<std::function<unsigned int()>, std::string> mistakes[] = {
        {[&] { return getUser(&taken, 1); }, "getUser: the output pointer is not null"},
        {[&] { return getUser(nullptr, 1); }, "getUser: the output pointer has no address"},
        {[&] { return getUsers(&none, nullptr); }, "getUsers: the count pointer is null"},
        {[&] { return addUsers(nullptr, 1); }, "addUsers: the text is null, and its length is not 0"},
        {[&] { return setServerIp(nullptr, 1); }, "setServerIp: the text is null, and its length is not 0"},
        {[&] { return getUsersWithParams(&none, &count, text, 1, nullptr, 1); },
         "getUsersWithParams: the value is null, and its length is not 0"},
        {[&] { return removeAffectFlag(nullptr, text, 1); }, "removeAffectFlag: the output pointer has no address"},
        {[&] { return freeUser(nullptr); }, "freeUser: the pointer is null"},
        {[&] { return freeUsersArray(&user, 0); }, "freeUsersArray: the count is 0"},
        {[&] { return tarnelCheckVersion(TARNEL_VERSION + 100, TARNEL_LAYOUT); },
         "tarnelCheckVersion: the client was compiled with version "},
    };
    for (const auto &[call, reason] : mistakes) {
        EXPECT_EQ(call(), TARNEL_INVALID_ARGUMENT) << reason;
        EXPECT_EQ(std::string(tarnelReason()).substr(0, reason.size()), reason);
        EXPECT_EQ(clearAll(), TARNEL_SUCCESS);
        EXPECT_TRUE(std::string(tarnelReason()).starts_with(reason)) << "is kept by a success";
        std::thread([] { EXPECT_STREQ(tarnelReason(), ""); }).join();
    }
    EXPECT_EQ(tarnelCheckVersion(tarnelVersion(), TARNEL_LAYOUT), TARNEL_SUCCESS);
    EXPECT_EQ(tarnelCheckVersion(TARNEL_VERSION, TARNEL_LAYOUT + 1), TARNEL_INVALID_ARGUMENT);
    EXPECT_STREQ(tarnelCodeAdvice(1), "");
    if (const pid_t child = ::fork(); child == 0)
        ::_exit(clearAll() == TARNEL_NOT_AVAILABLE && std::string(tarnelReason()).find("forked") < 50 ? 0 : 1);
    int status = 1;
    EXPECT_TRUE(::wait(&status) > 0 && status == 0);
}

/// What a program says of a code is what a reader finds in the README.
TEST(Codes, haveTheirNamesInTheReadme)
{
    std::ifstream file(TARNEL_README);
    const std::string readme{std::istreambuf_iterator(file), {}};
    unsigned int codes = 0;
    for (unsigned int code = 0; code < 256; ++code) {
        const std::string name = tarnelCodeName(code);
        const bool isListed = readme.find("\n| " + std::to_string(code) + " | `" + name + "` |") != std::string::npos;
        EXPECT_EQ(isListed, *tarnelCodeAdvice(code) != '\0') << code << name;
        codes += isListed ? 1 : 0;
    }
    EXPECT_EQ(codes, 14U);
}

/// A client that invents keys does not fill a log: there is room for so many mistakes, and the others are counted.
TEST_F(Diagnostics, mistakesWithoutEndAreCounted)
{
    constexpr unsigned int mistakes = 3000;
    const RunningCache cache;
    std::string records;
    for (unsigned int id = 0; id < mistakes; ++id)
        records.append(id > 0 ? "," : "").append(R"({"id":1,"k)" + std::to_string(id) + "\":1}");
    takeLog(Log::Requests);
    for (unsigned int round = 1; round <= 2; ++round) {
        EXPECT_EQ(call("addUsers", {items(records)}), "0");
        EXPECT_EQ(tarnelSuspicions(), round * mistakes);
        const std::size_t told = takeLog(Log::Requests).size();
        EXPECT_TRUE(round == 1 ? told > 500 && told <= 1024 : told == 0) << told;
    }
    EXPECT_EQ(call("addUsers", {R"({"D":)" + std::string(2000, '[')}), "10");
    EXPECT_STREQ(tarnelReason(), "addUsers: line 1, offset 1028: there are more than 1024 levels");
}

TEST_F(Diagnostics, reasonsAreCutBetweenCharacters)
{
    const RunningCache cache;
    ask("ALTER TABLE Users RENAME TO Former");
    for (std::string name : {"", "a"}) {
        for (int i = 0; i < 300; ++i)
            name += "ж";
        ask("CREATE VIEW Users AS SELECT * FROM \"" + name + "\"");
        EXPECT_EQ(call("getUsers"), "7");
        const std::string reason = tarnelReason();
        EXPECT_TRUE(reason.starts_with("getUsers: get users error: no such table: main.") && reason.ends_with("жж"))
            << reason;
        ask("DROP VIEW Users");
    }
}

TEST_F(Diagnostics, everyThreadLearnsWhyThereIsNoDatabase)
{
    EXPECT_EQ(clearAll(), TARNEL_NOT_AVAILABLE);
    EXPECT_STREQ(tarnelReason(), "clearAll: no cache is running");
    std::filesystem::create_directory("CacheDb");
    const RunningCache cache;
    for (int i = 0; i < 2; ++i)
        std::thread([] {
            EXPECT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_UNAVAILABLE);
            EXPECT_STREQ(tarnelReason(),
                         "getLaunchCacheResult: No database: unable to open database file: Is a directory");
        }).join();
}

} // namespace client
