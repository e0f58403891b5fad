#include "databasefile.h"
#include "kinds.h"

#include <QSqlDatabase>
#include <QStringList>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <set>

/// The file "CacheDb": what it holds, how a launch finds it, and what becomes of it.
namespace client {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

void write(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

std::string contentOf(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> filesHere()
{
    std::set<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(fs::current_path()))
        names.insert(entry.path().filename());
    return names;
}

unsigned int modeOf(const char *path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0 ? status.st_mode & 07777U : 0;
}

/// Launches the cache once, does something while it runs, and gives the launch result.
unsigned int launch(const std::function<void()> &whileRunning = [] {})
{
    const RunningCache cache;
    whileRunning();
    return getLaunchCacheResult();
}

/// A process of its own that does something and tells when it has, and then stays until it is killed.
class Child
{
public:
    explicit Child(const std::function<void(int)> &work)
    {
        if (::pipe(m_pipe) != 0)
            throw std::runtime_error("no pipe");
        m_process = ::fork();
        if (m_process != 0) {
            ::close(m_pipe[1]);
            return;
        }
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        work(m_pipe[1]);
        while (true)
            ::pause();
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    ~Child()
    {
        kill();
        ::close(m_pipe[0]);
    }

    /// The next number that the process has told; 0 after its end.
    [[nodiscard]] unsigned int next() const
    {
        unsigned int number = 0;
        return ::read(m_pipe[0], &number, sizeof number) == sizeof number ? number : 0;
    }

    void kill()
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, SIGKILL);
        ::waitpid(std::exchange(m_process, 0), nullptr, 0);
    }

private:
    int m_pipe[2] = {-1, -1};
    pid_t m_process = 0;
};

void tell(int pipe, unsigned int number)
{
    if (::write(pipe, &number, sizeof number) != sizeof number)
        ::_exit(1);
}

const std::string allTables = "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid";

} // namespace

TEST(Database, isCreatedAsEveryFileIs)
{
    const TemporaryDirectory directory;
    EXPECT_EQ(launch(), 100U);
    EXPECT_EQ(ask("SELECT sql FROM sqlite_master WHERE sql NOT NULL ORDER BY rowid"),
              "CREATE TABLE Users (UsersId UNSIGNED BIG INT PRIMARY KEY,UsersName VARCHAR(255),"
              "UsersLogin VARCHAR(255),UsersContacts VARCHAR(255),UsersIsActive BOOLEAN,"
              "UsersDomainId UNSIGNED BIG INT,UsersOrgId UNSIGNED BIG INT,UsersRoles UNSIGNED BIG INT,"
              "UsersPhone DOUBLE)\n"
              "CREATE TABLE Domains (DomainsId UNSIGNED BIG INT PRIMARY KEY,DomainsName VARCHAR(255),"
              "DomainsOrgId UNSIGNED BIG INT,DomainsLocaleId UNSIGNED BIG INT)\n"
              "CREATE TABLE Locales (LocalesId UNSIGNED BIG INT PRIMARY KEY,LocalesIso VARCHAR(255),"
              "LocalesDescription VARCHAR(255))\n"
              "CREATE TABLE Session (SessionId INTEGER PRIMARY KEY,SessionIp VARCHAR(255))\n"
              "CREATE TABLE Version (VersionId INTEGER PRIMARY KEY,VersionNumber VARCHAR(255))\n");
    EXPECT_EQ(ask("SELECT * FROM Version"), "0|0.1\n");
    EXPECT_EQ(launch(), 0U);
}

TEST(Database, holdsEveryValueInTheColumnOfItsField)
{
    const TemporaryDirectory directory;
    launch([] {
        for (const Kind &kind : kinds())
            EXPECT_EQ(kind.add(items(kind.record + R"(,{"id":2})")), "0");
    });
    EXPECT_EQ(ask("SELECT * FROM Locales; SELECT * FROM Domains; SELECT * FROM Users"),
              "1|ru|русский\n2|NULL|NULL\n1|北京|4294967295|7\n2|NULL|NULL|NULL\n"
              "1|Ωμέγα|o|𝄞|1|8|9|9007199254740992|4294967295.0\n2|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL\n");
}

TEST(Database, isReadableByItsOwnerAlone)
{
    const TemporaryDirectory directory;
    const mode_t former = ::umask(0);
    launch([] {
        EXPECT_EQ(modeOf("CacheDb"), 0600U);
        EXPECT_EQ(modeOf("CacheDb-wal"), 0600U);
    });
    EXPECT_EQ(::umask(former), 0U) << "the umask is the client's";
    ::chmod("CacheDb", 0640);
    EXPECT_EQ(launch(), 0U);
    EXPECT_EQ(modeOf("CacheDb"), 0640U) << "an existing file keeps its mode";
}

TEST(Database, connectionsSettingsAreWhatIsReliedOn)
{
    const TemporaryDirectory directory;
    static sqlite3 *connection = nullptr;
    const auto keep = [](sqlite3 *opened, char **, const void *) {
        connection = opened;
        return SQLITE_OK;
    };
    int (*const keepConnection)(sqlite3 *, char **, const void *) = keep;
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(keepConnection));
    launch([] {
        sqlite3_reset_auto_extension();
        for (const auto &[setting, value] : std::vector<std::pair<std::string, std::string>>{{"journal_mode", "wal"},
                                                                                             {"synchronous", "2"},
                                                                                             {"busy_timeout", "5000"},
                                                                                             {"foreign_keys", "0"},
                                                                                             {"secure_delete", "1"},
                                                                                             {"encoding", "UTF-8"},
                                                                                             {"locking_mode", "normal"},
                                                                                             {"query_only", "0"}}) {
            const auto compare = [](void *expected, int, char **columns, char **) {
                EXPECT_EQ(columns[0], *static_cast<const std::string *>(expected));
                return 0;
            };
            std::string expected = value;
            EXPECT_EQ(sqlite3_exec(connection, ("PRAGMA " + setting).c_str(), compare, &expected, nullptr), SQLITE_OK);
        }
    });
}

TEST(Database, firstConnectionHasTheEmptyName)
{
    const TemporaryDirectory directory;
    launch([] { EXPECT_EQ(QSqlDatabase::connectionNames(), QStringList("")); });
    write("CacheDb", "garbage");
    launch([] { EXPECT_TRUE(QSqlDatabase::contains("CacheDb")) << "a recreated one is opened under the file's name"; });
}

TEST(Database, isJudgedByWhatLiesAtItsName)
{
    struct Finding {
        std::string name;
        std::function<void()> place;
        unsigned int result;
    };
    const auto ask = [](const std::string &statements) {
        return [statements] {
            launch();
            client::ask(statements);
        };
    };
    std::vector<Finding> findings{
        {"nothing", [] {}, 100},
        {"a cache", [] { launch(); }, 0},
        {"a cache with unknown tables", ask("CREATE TABLE Later (LaterId)"), 0},
        {"another version", ask("UPDATE Version SET VersionNumber = '0.2'"), 103},
        {"a longer version", ask("UPDATE Version SET VersionNumber = '0.10'"), 103},
        {"no version", ask("DELETE FROM Version"), 103},
        {"no version text", ask("UPDATE Version SET VersionNumber = NULL"), 103},
        {"no version table", ask("DROP TABLE Version"), 103},
        {"no version column", ask("ALTER TABLE Version RENAME COLUMN VersionNumber TO Other"), 103},
        {"a table without a column", ask("ALTER TABLE Users DROP COLUMN UsersPhone"), 101},
        {"an empty file", [] { write("CacheDb", ""); }, 103},
        {"garbage", [] { write("CacheDb", std::string(100000, 'x')); }, 103},
        {"half a cache",
         [] {
             launch();
             fs::resize_file("CacheDb", 512);
         },
         103},
        {"a directory", [] { fs::create_directory("CacheDb"); }, 6},
        {"a link to nothing", [] { fs::create_symlink("nowhere", "CacheDb"); }, 6},
        {"a socket",
         [] {
             const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
             const sockaddr_un address{AF_UNIX, "CacheDb"};
             EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
             ::close(socket);
         },
         102}};
    {
        const TemporaryDirectory directory;
        launch();
        std::istringstream tables(client::ask(allTables));
        for (std::string table; std::getline(tables, table);) {
            if (table != "Version")
                findings.push_back({"no table " + table, ask("DROP TABLE " + table), 101});
        }
    }
    for (const Finding &finding : findings) {
        SCOPED_TRACE(finding.name);
        const TemporaryDirectory directory;
        finding.place();
        const std::set<std::string> before = filesHere();
        EXPECT_EQ(launch(), finding.result);
        EXPECT_EQ(filesHere(), finding.result == 6 ? before : std::set<std::string>{"CacheDb"});
    }
}

TEST(Database, recreatedDatabaseHasNoTables)
{
    const TemporaryDirectory directory;
    write("CacheDb", "garbage");
    EXPECT_EQ(launch([] {
                  for (const Kind &kind : kinds()) {
                      EXPECT_EQ(kind.get(1), "7");
                      EXPECT_EQ(kind.getAll(), "7");
                      EXPECT_EQ(kind.getWithParams("id", "1"), "7");
                      EXPECT_EQ(kind.add(items(kind.record)), "9");
                      if (kind.update) {
                          EXPECT_EQ(kind.update(item(kind.record)), "9");
                      }
                      if (kind.deleteItem) {
                          EXPECT_EQ(kind.deleteItem(kind.deleteRequest(1)), "7");
                      }
                  }
              }),
              103U);
    EXPECT_EQ(ask(allTables), "");
    fs::remove("CacheDb");
    EXPECT_EQ(launch([] { EXPECT_EQ(kind("Users").add(items(R"({"id":1})")), "0"); }), 100U);
}

TEST(Database, cacheWithoutADatabaseRunsAndFails)
{
    const TemporaryDirectory directory;
    fs::create_directory("CacheDb");
    EXPECT_EQ(launch([] {
                  EXPECT_EQ(kind("Locales").getAll(), "7");
                  EXPECT_EQ(kind("Locales").add(items(R"({"id":1})")), "9");
              }),
              6U);
}

TEST(Database, takesItsSideFilesAlong)
{
    for (const bool isThere : {true, false}) {
        const TemporaryDirectory directory;
        launch();
        if (isThere)
            ask("DELETE FROM Version");
        else
            fs::remove("CacheDb");
        for (const char *name : {"CacheDb-wal", "CacheDb-shm", "CacheDb-journal"})
            write(name, std::string(5000, 'x'));
        EXPECT_EQ(launch([] { EXPECT_FALSE(fs::exists("CacheDb-journal")); }), isThere ? 103U : 100U);
        EXPECT_EQ(filesHere(), std::set<std::string>{"CacheDb"});
    }
}

TEST(Database, lockedOneIsNeverDeleted)
{
    const TemporaryDirectory directory;
    launch([] { EXPECT_EQ(kind("Users").add(items(R"({"id":1,"name":"kept"})")), "0"); });
    const std::string content = contentOf("CacheDb");
    {
        const Child child([](int pipe) {
            sqlite3 *connection = nullptr;
            sqlite3_open("CacheDb", &connection);
            tell(pipe, sqlite3_exec(connection, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr,
                                    nullptr) == SQLITE_OK);
        });
        ASSERT_EQ(child.next(), 1U);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(launch(), 6U);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 7s);
        EXPECT_EQ(contentOf("CacheDb"), content);
    }
    EXPECT_EQ(launch([] { EXPECT_EQ(kind("Users").get(1).substr(0, 8), "0 1|kept"); }), 0U);
}

TEST(Database, isCompleteInOneFileWithinTwoSecondsOfAWrite)
{
    const TemporaryDirectory directory;
    const RunningCache cache;
    const auto end = std::chrono::steady_clock::now() + 2s;
    // Writing that goes on must not put it off.
    for (int id = 1; std::chrono::steady_clock::now() < end; ++id) {
        ASSERT_EQ(kind("Locales").add(items(R"({"id":)" + std::to_string(id) + "}")), "0");
        std::this_thread::sleep_for(50ms);
    }
    // A copy by this process would drop its own locks on the file.
    ASSERT_EQ(std::system("cp CacheDb copy"), 0);
    EXPECT_EQ(ask("SELECT LocalesId FROM Locales WHERE LocalesId = 1", "copy"), "1\n");
}

TEST(Database, acknowledgedRecordsOutliveAKilledProcess)
{
    const TemporaryDirectory directory;
    Child child([](int pipe) {
        const RunningCache cache;
        for (unsigned int id = 1; kind("Users").add(items(R"({"id":)" + std::to_string(id) + "}")) == "0"; ++id)
            tell(pipe, id);
    });
    unsigned int last = 0;
    while (last < 100)
        ASSERT_EQ(child.next(), ++last);
    child.kill();
    while (child.next() != 0)
        ++last;
    EXPECT_EQ(launch(), 0U);
    EXPECT_EQ(ask("SELECT count(*) FROM Users WHERE UsersId <= " + std::to_string(last)), std::to_string(last) + "\n");
}

} // namespace client
