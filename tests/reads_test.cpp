#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <atomic>
#include <chrono>
#include <optional>

/// Reads beside writes and beside each other.
namespace client {

namespace {

using namespace std::chrono_literals;

/// Threads that do something again and again until the object goes.
class Busy
{
public:
    Busy(int threads, const std::function<void()> &work)
    {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([this, work] {
                while (!m_isOver)
                    work();
            });
    }
    ~Busy()
    {
        m_isOver = true;
        for (std::thread &thread : m_threads)
            thread.join();
    }

private:
    std::atomic<bool> m_isOver = false;
    std::vector<std::thread> m_threads;
};

/// Statements for each table, whose name # stands for.
std::string forEachTable(const std::string &statements)
{
    return ask("SELECT replace('" + statements + "', '#', name) FROM sqlite_master WHERE type = 'table'");
}

/// Has SQLite call `work` where a statement says "interrupt()", on that statement's thread. It must be there before the
/// cache is launched.
class Interruption
{
public:
    explicit Interruption(std::function<void()> work)
    {
        m_work = std::move(work);
        const auto addFunction = [](sqlite3 *connection, char **, const void *) {
            const auto interrupt = [](sqlite3_context *context, int, sqlite3_value **) {
                m_work();
                sqlite3_result_int(context, 1);
            };
            return sqlite3_create_function(connection, "interrupt", 0, SQLITE_UTF8, nullptr, interrupt, nullptr,
                                           nullptr);
        };
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(+addFunction));
    }
    ~Interruption() { sqlite3_reset_auto_extension(); }

private:
    static inline std::function<void()> m_work;
};

/// A request for many users, all of one domain.
Argument users(unsigned int domain)
{
    std::string records;
    for (int id = 1; id <= 2000; ++id)
        records += (id == 1 ? R"({"id":)" : R"(,{"id":)") + std::to_string(id) + R"(,"domain":)" +
                   std::to_string(domain) + "}";
    return items(records);
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
    std::thread writer([&] {
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
    expectLogOf(stepsOf("addLocales").front(), "database is locked Unable to fetch row");
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
    EXPECT_EQ(call("addUsers", {users(0)}), "0");
    const Busy readers(3, [&] {
        const unsigned int least = written;
        EXPECT_GE(readDomain(), least);
    });
    for (unsigned int round = 1; round <= 50; ++round) {
        EXPECT_EQ(call("addUsers", {users(round)}), "0");
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
        const Interruption interruption([&] { ask(std::exchange(clearing, "")); });
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

/// The first event makes an index, behind the backs of those who read.
TEST(ReadsOfEvents, areNotDisturbedByTheirIndex)
{
    for (int round = 0; round < 10; ++round) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        EXPECT_EQ(call("addDevices", {items(R"({"id":1})")}), "0");
        const Busy readers(3, [&] { EXPECT_NE(call("getEvents", {0, ~0U}), "7"); });
        EXPECT_EQ(call("addEvents", {items(R"({"id":1,"time":1,"device":1})")}), "0 1|1|1");
        EXPECT_EQ(call("getEvents", {0, ~0U}), "0 1|1|1");
    }
}

TEST_F(Reads, doNotKeepTheLogFromBeingFolded)
{
    const RunningCache cache;
    EXPECT_EQ(call("addUsers", {users(1)}), "0");
    const Busy readers(3, [] { readDomain(); });
    EXPECT_EQ(call("addUsers", {users(2)}), "0");
    const auto end = std::chrono::steady_clock::now() + 2s;
    while (std::filesystem::file_size("CacheDb-wal") != 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(std::filesystem::file_size("CacheDb-wal"), 0U);
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
        std::vector<std::thread> writers;
        std::atomic<int> asking = 0;
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
        for (std::thread &writer : writers)
            writer.join();
        EXPECT_EQ(ask("SELECT group_concat(Turn, '') FROM Turns"), "12345\n");
    }
}

TEST_F(Reads, andWritesThatHaveBegunEndBeforeAnExitDoes)
{
    std::atomic<bool> isReading = false;
    std::atomic<bool> isReadReleased = false;
    const Interruption interruption([&] {
        isReading = true;
        waitUntil([&] { return isReadReleased.load(); });
    });
    std::optional<RunningCache> cache(std::in_place);
    EXPECT_EQ(call("addLocales", {items(R"({"id":1})")}), "0");
    ask("ALTER TABLE Locales RENAME TO Real; CREATE VIEW Locales AS SELECT * FROM Real WHERE interrupt()");
    std::thread reader([] { EXPECT_EQ(call("getLocales"), "0 1"); });
    EXPECT_TRUE(waitUntil([&] { return isReading.load(); }));
    std::optional<Connection> foreign(std::in_place);
    foreign->ask("BEGIN IMMEDIATE");
    std::vector<std::thread> writers;
    std::atomic<int> refused = 0;
    for (int i = 0; i < 3; ++i)
        writers.emplace_back([&] { refused += call("setServerIp", {"1"}) == "255"; });
    std::this_thread::sleep_for(100ms);
    std::atomic<bool> isExited = false;
    std::thread exit([&] {
        cache.reset();
        isExited = true;
    });
    EXPECT_TRUE(waitUntil([] { return getState() == TARNEL_STATE_NONE; }));
    EXPECT_EQ(call("getLocales"), "255") << "at once";
    foreign.reset();
    for (std::thread &writer : writers)
        writer.join();
    EXPECT_EQ(refused, 2) << "those that had not begun";
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(isExited);
    isReadReleased = true;
    reader.join();
    exit.join();
}

/// Whichever connection meets a table that another process has changed; and the lines of one failure stay together.
TEST_F(Reads, failAlikeOnEveryConnection)
{
    const RunningCache cache;
    addOneOfEverything();
    const auto callAtOnce = [](const std::string &answer) {
        std::vector<std::thread> threads;
        for (const char *name : {"getUser", "getUsers", "getUsersWithParams", "getUser"})
            threads.emplace_back([=] {
                for (int i = 0; i < 50; ++i)
                    EXPECT_EQ(exported(name).callWith(1).substr(0, 1), answer) << name;
            });
        for (std::thread &thread : threads)
            thread.join();
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
            // It ends with how far the call came, which depends on what that connection had prepared before.
            const std::string &reason = lines[i + 1];
            EXPECT_EQ(reason.substr(0, text.size()), text);
            EXPECT_EQ(Lines(&lines[i], &lines[i] + 4), (Lines{"execute error", reason, lines[i + 2], reason}));
        }
    }
    ask(creation);
    EXPECT_EQ(exported("addUsers").callWith(1), "0");
    callAtOnce("0");
}

} // namespace client
