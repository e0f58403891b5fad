#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <optional>

/// Reads beside writes and beside each other.
namespace client {

namespace {

using namespace std::chrono_literals;

/// Statements for each table, whose name # stands for.
std::string forEachTable(const std::string &statements)
{
    return ask("SELECT replace('" + statements + "', '#', name) FROM sqlite_master WHERE type = 'table'");
}

/// Has SQLite call `work` where a statement says "interrupt()", on that statement's thread, in caches that are launched
/// from now on.
void onInterrupt(const std::function<void()> &work)
{
    static std::function<void()> current;
    current = work;
    const auto addFunction = [](sqlite3 *connection, char **, const void *) {
        const auto interrupt = [](sqlite3_context *context, int, sqlite3_value **) {
            current();
            sqlite3_result_int(context, 1);
        };
        return sqlite3_create_function(connection, "interrupt", 0, SQLITE_UTF8, nullptr, interrupt, nullptr, nullptr);
    };
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(+addFunction));
}

/// Adds many users, all of one domain.
void addUsers(unsigned int domain)
{
    EXPECT_EQ(call("addUsers", {items(R"({"id":#,"domain":)" + std::to_string(domain) + "}", 1, 2000)}), "0");
}

/// Reads the users, of whom all are to be of one domain; gives that.
unsigned int readDomain()
{
    api::User *list = nullptr;
    unsigned int count = 0;
    EXPECT_EQ(getUsers(&list, &count), TARNEL_SUCCESS);
    const unsigned int domain = count == 0 ? 0 : *list[0].domainId;
    for (unsigned int i = 0; i < count; ++i)
        EXPECT_EQ(*list[i].domainId, domain);
    freeUsersArray(list, count);
    return domain;
}

} // namespace

using Reads = DirectoryTest;

TEST_F(Reads, doNotWaitForAWrite)
{
    const RunningCache cache;
    addOneOfEverything();
    Connection foreign;
    foreign.ask("BEGIN IMMEDIATE");
    takeLog();
    std::atomic<bool> isAnswered = false;
    std::jthread writer([&] {
        EXPECT_EQ(call("addLocales", {items(R"({"id":2})")}), "9") << "it has waited long enough";
        isAnswered = true;
    });
    std::this_thread::sleep_for(100ms);
    for (const Export &function : exports()) {
        if (function.isRead()) {
            EXPECT_EQ(function.callWith(1)[0], '0') << function.name;
        }
    }
    EXPECT_FALSE(isAnswered);
    writer.join();
    expectLogOf({stepsOf("addLocales").front()}, "database is locked Unable to fetch row");
}

/// A file system without shared memory has no log for reads beside writes.
TEST_F(Reads, andWritesShareAFileWithoutALog)
{
    sqlite3_vfs_register(sqlite3_vfs_find("unix-dotfile"), 1);
    {
        const RunningCache cache;
        addOneOfEverything();
        const Busy readers(2, [] { EXPECT_EQ(call("getDomain", {1})[0], '0'); });
        for (const Export &function : exports()) {
            if (!function.name.starts_with("delete") && !function.name.starts_with("clear")) {
                EXPECT_EQ(function.callWith(1)[0], '0') << function.name;
            }
        }
        EXPECT_FALSE(std::filesystem::exists("CacheDb-wal"));
    }
    sqlite3_vfs_register(sqlite3_vfs_find("unix"), 1);
}

TEST_F(Reads, seeWholeWritesAndAllThatHaveReturned)
{
    const RunningCache cache;
    std::atomic<unsigned int> written = 0;
    addUsers(0);
    const Busy readers(3, [&] {
        const unsigned int least = written;
        EXPECT_GE(readDomain(), least);
    });
    for (unsigned int round = 1; round <= 50; ++round) {
        addUsers(round);
        written = round;
    }
}

/// What comes between the steps of a read is not seen by it.
TEST(ReadsOfSeveralSteps, seeOneState)
{
    for (const Export &function : exports()) {
        if (!function.isRead())
            continue;
        SCOPED_TRACE(function.name);
        const TemporaryDirectory directory;
        std::string clearing;
        onInterrupt([&] { ask(std::exchange(clearing, "")); });
        const RunningCache cache;
        addOneOfEverything();
        EXPECT_EQ(call("setServerIp", {"1"}), "0");
        const std::string before = function.callWith(1);
        clearing = forEachTable("DELETE FROM Real#;");
        ask(forEachTable("ALTER TABLE # RENAME TO Real#; CREATE VIEW # AS SELECT * FROM Real# WHERE interrupt();"));
        EXPECT_EQ(function.callWith(1), before);
        EXPECT_EQ(clearing, "") << "it has been interrupted";
        EXPECT_NE(function.callWith(1), before);
    }
}

/// Neither reads nor writes that go on keep what was written from being in the file within two seconds.
TEST_F(Reads, andWritesDoNotKeepTheLogFromBeingFolded)
{
    const RunningCache cache;
    addUsers(1);
    const Busy readers(3, [] { readDomain(); });
    for (const bool isWriting : {true, false}) {
        const auto end = std::chrono::steady_clock::now() + 2s;
        const auto isFolded = [=] {
            return isWriting ? std::filesystem::file_size("CacheDb") > 60000
                             : std::filesystem::file_size("CacheDb-wal") == 0;
        };
        while (!isFolded() && std::chrono::steady_clock::now() < end) {
            EXPECT_TRUE(!isWriting || call("addLocales", {items(R"({"id":1})")}) == "0");
            std::this_thread::sleep_for(50ms);
        }
        EXPECT_TRUE(isFolded()) << isWriting;
    }
}

/// Not even beside a read that does not end: from 64 MiB on, a write waits for it.
TEST_F(Reads, withoutEndDoNotLetTheLogGrowWithoutBound)
{
    std::atomic<bool> isReading = false;
    std::atomic<bool> isReadReleased = false;
    onInterrupt([&] {
        isReading = true;
        waitUntil([&] { return isReadReleased.load(); });
    });
    const RunningCache cache;
    EXPECT_EQ(call("addLocales", {items(R"({"id":1})")}), "0");
    ask("ALTER TABLE Locales RENAME TO Real; CREATE VIEW Locales AS SELECT * FROM Real WHERE interrupt()");
    std::jthread reader([] { EXPECT_EQ(call("getLocales"), "0 1"); });
    EXPECT_TRUE(waitUntil([&] { return isReading.load(); }));
    const std::string request = items(R"({"id":#,"name":")" + std::string(3900, 'n') + "\"}", 1, 4000); // 16 MB.
    constexpr int enough = 8;
    std::atomic<int> adds = 0;
    std::jthread writer([&] {
        for (; adds < enough; ++adds)
            EXPECT_EQ(call("addUsers", {request}), "0");
    });
    const auto megabytes = [] { return std::filesystem::file_size("CacheDb-wal") >> 20; };
    EXPECT_TRUE(waitUntil([&] { return megabytes() >= 64; }));
    std::this_thread::sleep_for(500ms);
    EXPECT_LT(adds, enough);
    EXPECT_LT(megabytes(), 64 + 20U);
    isReadReleased = true;
    writer.join();
    EXPECT_LT(megabytes(), 64 + 20U);
}

/// Frequent reads hold a state of the file, which keeps others from emptying the log: a moment longer than they last.
TEST_F(Reads, thatRestLetOthersEmptyTheLog)
{
    const RunningCache cache;
    addOneOfEverything();
    EXPECT_TRUE(waitUntil([] { return std::filesystem::file_size("CacheDb-wal") == 0; }));
    Connection foreign;
    const auto isEmptied = [&] {
        return foreign.ask("PRAGMA busy_timeout=0; PRAGMA wal_checkpoint(TRUNCATE)").starts_with("0\n0");
    };
    EXPECT_TRUE(waitUntil([&] {
        foreign.ask("PRAGMA busy_timeout=5000; UPDATE Domains SET DomainsId=1");
        for (int read = 0; read < 1000; ++read)
            EXPECT_EQ(call("getDomain", {1})[0], '0');
        return !isEmptied();
    })) << "a state is held";
    EXPECT_TRUE(waitUntil(isEmptied));
}

TEST_F(Reads, byAnotherProcessNeitherHoldUpAnExitNorLoseTheirLog)
{
    std::optional<RunningCache> cache(std::in_place);
    addUsers(1);
    Connection foreign;
    foreign.ask("BEGIN; SELECT * FROM Users");
    const auto begin = std::chrono::steady_clock::now();
    cache.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    EXPECT_EQ(foreign.ask("SELECT count(*) FROM Users; COMMIT; PRAGMA journal_mode"), "2000\nwal\n");
}

/// Whoever asks again at once comes after those who wait.
TEST_F(Reads, andWritesComeInTheOrderOfAsking)
{
    const RunningCache cache;
    ask("CREATE TABLE Turns (Turn); CREATE TRIGGER turn AFTER INSERT ON Locales BEGIN "
        "INSERT INTO Turns VALUES (NEW.LocalesId); END");
    const auto add = [](int id) {
        EXPECT_EQ(call("addLocales", {items(R"({"id":)" + std::to_string(id) + "}")}), "0");
    };
    for (int round = 0; round < 3; ++round) {
        std::optional<Connection> foreign(std::in_place);
        foreign->ask("DELETE FROM Turns; BEGIN IMMEDIATE");
        std::atomic<int> asking = 0;
        std::vector<std::jthread> writers;
        for (int id = 1; id <= 4; ++id) {
            writers.emplace_back([=, &asking] {
                asking = id;
                add(id);
                if (id == 1)
                    add(5);
            });
            EXPECT_TRUE(waitUntil([&] { return asking == id; }));
            std::this_thread::sleep_for(50ms);
        }
        foreign.reset();
        writers.clear();
        EXPECT_EQ(ask("SELECT group_concat(Turn, '') FROM Turns"), "12345\n");
    }
}

/// Questions do not wait for a long call, and an exit does. One that is held up between its wish and its deed must not
/// take the cache from the launch that follows.
TEST_F(Reads, andWritesThatHaveBegunEndBeforeAnExitDoes)
{
    static std::atomic<bool> isHeldUp = true;
    std::signal(SIGUSR1, [](int) {
        while (isHeldUp) {
        }
    });
    std::atomic<bool> isReading = false;
    std::atomic<bool> isReadReleased = false;
    onInterrupt([&] {
        isReading = true;
        waitUntil([&] { return isReadReleased.load(); });
    });
    std::jthread former(launchCache);
    ASSERT_TRUE(waitUntil([] { return getState() == TARNEL_STATE_RUNNING; }));
    EXPECT_EQ(call("addLocales", {items(R"({"id":1})")}), "0");
    ask("ALTER TABLE Locales RENAME TO Real; CREATE VIEW Locales AS SELECT * FROM Real WHERE interrupt()");
    std::jthread reader([] { EXPECT_EQ(call("getLocales"), "0 1"); });
    EXPECT_TRUE(waitUntil([&] { return isReading.load(); }));
    std::optional<Connection> foreign(std::in_place);
    foreign->ask("BEGIN IMMEDIATE");
    std::atomic<int> refused = 0;
    std::vector<std::jthread> writers;
    for (int i = 0; i < 3; ++i)
        writers.emplace_back([&] { refused += call("setServerIp", {"1"}) == "255"; });
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(getState(), TARNEL_STATE_RUNNING);
    EXPECT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_CREATED);
    std::atomic<bool> isExited = false;
    std::jthread exit([&] {
        exitCache();
        isExited = true;
    });
    EXPECT_TRUE(waitUntil([] { return getState() == TARNEL_STATE_NONE; }));
    EXPECT_EQ(call("getLocales"), "255") << "at once";
    foreign.reset();
    writers.clear();
    EXPECT_EQ(refused, 2) << "those that had not begun";
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(isExited);
#ifndef __SANITIZE_THREAD__ // Which puts signals off.
    ::pthread_kill(exit.native_handle(), SIGUSR1);
#endif
    isReadReleased = true;
    reader.join();
    former.join();
    const RunningCache next;
    isHeldUp = false;
    exit.join();
    EXPECT_EQ(getState(), TARNEL_STATE_RUNNING);
}

/// Whichever connection meets a table that another process has changed; and the lines of one failure stay together.
TEST_F(Reads, failAlikeOnEveryConnection)
{
    const RunningCache cache;
    addOneOfEverything();
    const auto callAtOnce = [](const std::string &answer) {
        std::vector<std::jthread> threads;
        for (const char *name : {"getUser", "getUsers", "getUsersWithParams", "getUser"})
            threads.emplace_back([=] {
                for (int i = 0; i < 50; ++i)
                    EXPECT_EQ(exported(name).callWith(1).substr(0, 1), answer) << name;
            });
    };
    callAtOnce("0");
    const std::string creation = ask("SELECT sql FROM sqlite_master WHERE name = 'Users'");
    const std::pair<const char *, std::string> changes[] = {
        {"ALTER TABLE Users DROP COLUMN UsersPhone", "no such column: UsersPhone Unable to "},
        {"DROP TABLE Users", "no such table: Users Unable to "}};
    for (const auto &[change, text] : changes) {
        ask(change);
        takeLog();
        callAtOnce("7");
        const Lines lines = takeLog();
        EXPECT_EQ(lines.size(), 4 * 200U);
        for (std::size_t i = 0; i + 4 <= lines.size(); i += 4) {
            EXPECT_TRUE(lines[i + 1].starts_with(text)) << lines[i + 1];
            EXPECT_EQ(Lines(&lines[i], &lines[i] + 4),
                      (Lines{"execute error", lines[i + 1], lines[i + 2], lines[i + 1]}));
        }
    }
    ask(creation);
    EXPECT_EQ(exported("addUsers").callWith(1), "0");
    callAtOnce("0");
}

} // namespace client
