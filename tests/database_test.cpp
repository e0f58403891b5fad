#include "databasefile.h"
#include "exports.h"

#include <QSqlDatabase>
#include <QStringList>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>

/// The file "CacheDb": what it holds, how a launch finds it, and what becomes of it.
namespace client {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Names = std::set<std::string>;

void write(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

Names filesHere()
{
    Names names;
    for (const fs::directory_entry &entry : fs::directory_iterator(fs::current_path()))
        names.insert(entry.path().filename());
    return names;
}

struct stat statusOf(const char *path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path, &status), 0) << path;
    return status;
}

/// Launches the cache once, does something while it runs, and gives the launch result.
unsigned int launch(const std::function<void()> &whileRunning = [] {})
{
    const RunningCache cache;
    whileRunning();
    return getLaunchCacheResult();
}

void addUser(unsigned int id)
{
    ASSERT_EQ(call("addUsers", {items(R"({"id":)" + std::to_string(id) + "}")}), "0");
}

} // namespace

using Database = DirectoryTest;

TEST_F(Database, isCreatedAsEveryFileIs)
{
    const std::string schema = readData("schema.sql");
    const std::string statements = "SELECT sql FROM sqlite_master WHERE sql NOT NULL ORDER BY rowid";
    launch([&] {
        EXPECT_EQ(ask(statements), schema);
        EXPECT_EQ(QSqlDatabase::connectionNames(), QStringList("")) << "as its clients have been told";
        EXPECT_EQ(call("addEvent", {item(R"({"id":1})")}), "0 1");
        EXPECT_EQ(ask(statements), schema + "CREATE INDEX EventsTimeIndex ON Events (EventsTime)\n");
    });
    write("CacheDb", "garbage");
    launch([] { EXPECT_TRUE(QSqlDatabase::contains("CacheDb")) << "when it is made anew"; });
}

TEST_F(Database, isReadableByItsOwnerAlone)
{
    const mode_t former = ::umask(0);
    launch([] {
        for (const char *path : {"CacheDb", "CacheDb-wal"})
            EXPECT_EQ(statusOf(path).st_mode & 07777U, 0600U);
    });
    EXPECT_EQ(::umask(former), 0U) << "the umask is the client's";
    ::chmod("CacheDb", 0640);
    launch();
    EXPECT_EQ(statusOf("CacheDb").st_mode & 07777U, 0640U) << "an existing file keeps its mode";
}

TEST(DatabaseFile, isJudgedByWhatLiesAtItsName)
{
    const std::pair<std::string, unsigned int> findings[] = {
        {"rm CacheDb", 100},
        {"printf '' >CacheDb", 103},
        {"head -c 100000 /dev/zero >CacheDb", 103},
        {"truncate -s 512 CacheDb", 103},
        {"rm CacheDb; python3 -c 'import os; os.mknod(\"CacheDb\", 0o140600)' # a socket", 102},
        {"rm CacheDb; mkdir CacheDb", 6},
        {"rm CacheDb; ln -s nowhere CacheDb", 6},
    };
    for (const auto &finding : findings) {
        SCOPED_TRACE(finding.first);
        const TemporaryDirectory directory;
        launch();
        ASSERT_EQ(std::system(finding.first.c_str()), 0);
        const Names before = filesHere();
        // The cache runs, whatever it could make of the file.
        const auto callAll = [&] {
            for (const Export &function : exports()) {
                const bool isReadFirst =
                    function.isRead() || function.name.starts_with("delete") || function.name == "removeAffectFlag";
                if (finding.second != 100) {
                    EXPECT_EQ(function.callWith(1), isReadFirst ? "7" : "9") << function.name;
                }
            }
        };
        EXPECT_EQ(launch(callAll), finding.second);
        EXPECT_EQ(filesHere(), finding.second == 6 ? before : Names{"CacheDb"});
    }
}

TEST_F(Database, withoutOneOfItsTablesIsMadeAnew)
{
    launch();
    std::istringstream tables(ask("SELECT name FROM sqlite_master WHERE type = 'table'"));
    for (std::string table; tables >> table;) {
        ask("DROP TABLE " + table);
        EXPECT_EQ(launch(), table == "Version" ? 103U : 101U) << table;
        EXPECT_EQ(content(), "") << table;
        fs::remove("CacheDb");
        EXPECT_EQ(launch(), 100U);
    }
}

TEST_F(Database, needsNoMoreOfItsTablesThanIsRead)
{
    launch([] { EXPECT_EQ(call("setServerIp", {"10.0.0.1"}), "0"); });
    const std::pair<const char *, const char *> findings[] = {
        {"ALTER TABLE Session ADD COLUMN SessionPort", "0 10.0.0.1"},
        {"DROP TABLE Session; CREATE TABLE Session (SessionIp, SessionId);"
         "INSERT INTO Session VALUES ('10.0.0.2', 0)",
         "0 10.0.0.2"},
        {"ALTER TABLE Session DROP COLUMN SessionIp", "0 -"},
        {"DROP TABLE DeviceUserSectionLinks; CREATE TABLE DeviceUserSectionLinks"
         "(DeviceUserSectionLinksDeviceId, DeviceUserSectionLinksDeviceUserId)",
         "0 -"},
    };
    for (const auto &[change, address] : findings) {
        ask(change);
        EXPECT_EQ(launch([address = address] { EXPECT_EQ(call("getServerIp"), address); }), 0U) << change;
    }
}

/// What SQLite would put away with it has the names of another file's.
TEST_F(Database, thatWasMovedLeavesTheFileInItsPlaceAlone)
{
    launch([] {
        addUser(1);
        ASSERT_EQ(std::system("mkdir old && mv CacheDb* old"), 0);
        const pid_t process = ::fork();
        if (process == 0) {
            static Connection other("CacheDb", SQLITE_OPEN_CREATE);
            other.ask("PRAGMA journal_mode=WAL; CREATE TABLE Other (Id); INSERT INTO Other VALUES (7)");
            ::_exit(0);
        }
        ::waitpid(process, nullptr, 0);
    });
    EXPECT_EQ(ask("SELECT Id FROM Other"), "7\n");
    EXPECT_EQ(ask("SELECT UsersId FROM Users", "old/CacheDb"), "1\n");
}

TEST_F(Database, leavesTheLogToAnotherProcessThatUsesIt)
{
    std::optional<Connection> foreign;
    std::chrono::steady_clock::time_point begin;
    launch([&] {
        addUser(1);
        foreign.emplace().ask("BEGIN; SELECT * FROM Users");
        begin = std::chrono::steady_clock::now();
    });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s) << "nobody waits for it";
    EXPECT_EQ(foreign->ask("SELECT UsersId FROM Users; COMMIT; PRAGMA journal_mode"), "1\nwal\n");
}

TEST_F(Database, lockedOneIsNeverDeleted)
{
    launch([] { addUser(1); });
    const auto inode = statusOf("CacheDb").st_ino;
    {
        Connection foreign;
        foreign.ask("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(launch(), 6U);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 7s);
    }
    EXPECT_EQ(statusOf("CacheDb").st_ino, inode);
    EXPECT_EQ(launch([] { EXPECT_EQ(call("getUsers"), "0 1"); }), 0U);
}

TEST_F(Database, isCompleteInOneFileWithinTwoSecondsOfAWrite)
{
    const RunningCache cache;
    const auto end = std::chrono::steady_clock::now() + 2s;
    // Writing that goes on must not put it off.
    for (unsigned int id = 1; std::chrono::steady_clock::now() < end; ++id) {
        addUser(id);
        std::this_thread::sleep_for(50ms);
    }
    // A copy by this process would drop its own locks on the file.
    ASSERT_EQ(std::system("cp CacheDb copy"), 0);
    EXPECT_EQ(ask("SELECT UsersId FROM Users WHERE UsersId = 1", "copy"), "1\n");
}

TEST_F(Database, acknowledgedRecordsOutliveAKilledProcess)
{
    using Shared = std::atomic<unsigned int>;
    void *const memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto *const acknowledged = ::new (memory) Shared(0);
    const pid_t process = ::fork();
    if (process == 0) {
        const RunningCache cache;
        for (unsigned int id = 1;; *acknowledged = id++)
            addUser(id);
    }
    EXPECT_TRUE(waitUntil([&] { return *acknowledged >= 100; }));
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    EXPECT_EQ(launch(), 0U);
    const std::string last = std::to_string(*acknowledged);
    EXPECT_EQ(ask("SELECT count(*) FROM Users WHERE UsersId <= " + last), last + "\n");
}

} // namespace client
