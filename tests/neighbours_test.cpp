#include "child.h"
#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <optional>

/// Two processes that run the cache in one directory, and a third that copies its file.
namespace client {

using namespace std::chrono_literals;

class Neighbours : public ParentTest
{
protected:
    /// How many steps the processes have made together, and how many have made the file.
    SharedNumber steps;
    SharedNumber created;

    /// Waits until all processes together have made so many steps, this one of this process among them.
    void stepAndAwait(unsigned int awaited)
    {
        ++*steps;
        EXPECT_TRUE(waitUntil([&] { return *steps >= awaited; }));
    }

    /// Does something in two processes, 1 and 2.
    static void inTwo(
        const std::function<void(int process)> &work, const std::function<void()> &meanwhile = [] {})
    {
        const Child first([&] { work(1); });
        const Child second([&] { work(2); });
        meanwhile();
    }
};

namespace {

std::string addUsers(int first, int last, unsigned int domain)
{
    return call("addUsers", {items(R"({"id":#,"domain":)" + std::to_string(domain) + "}",
                                   static_cast<unsigned int>(first), static_cast<unsigned int>(last))});
}

} // namespace

TEST_F(Neighbours, launchAndExitAtOnceAndLoseNothing)
{
    const unsigned int rounds = setting("TARNEL_ROUNDS", 10);
    for (unsigned int round = 1; round <= rounds && !HasFailure(); ++round) {
        const TemporaryDirectory directory;
        inTwo([&](int process) {
            stepAndAwait(round * 2);
            for (int launch = 0; launch < 10; ++launch) {
                const RunningCache cache;
                *created += getLaunchCacheResult() == TARNEL_DATABASE_CREATED;
                EXPECT_TRUE(getLaunchCacheResult() % TARNEL_DATABASE_CREATED == 0) << getLaunchCacheResult();
                const int id = process * 10 + launch;
                EXPECT_EQ(addUsers(id, id, 1), "0");
                EXPECT_EQ(call("getUser", {process * 10})[0], '0');
            }
        });
        EXPECT_EQ(*created, round);
        EXPECT_EQ(ask("SELECT count(*) FROM Users"), "20\n");
    }
    printTried("launches and exits of two processes at once", 20UL * rounds);
}

TEST_F(Neighbours, areGivenUpWhenTheyHangInALaunch)
{
    const int directory = ::open(".", O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(directory, LOCK_EX), 0);
    takeLog();
    const RunningCache cache;
    EXPECT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_UNAVAILABLE);
    EXPECT_EQ(takeLog(), Lines{"No database: another process is being launched"});
    ::close(directory);
}

/// Also one that is not as it should be: it may be another version's.
TEST_F(Neighbours, keepTheFileThatTheyUse)
{
    std::optional<RunningCache>(std::in_place).reset();
    ask("PRAGMA journal_mode=WAL; DROP TABLE Zones");
    const Child neighbour([&] {
        Connection file;
        file.ask("SELECT * FROM Users");
        stepAndAwait(2);
    });
    EXPECT_TRUE(waitUntil([&] { return *steps == 1; }));
    {
        const RunningCache cache;
        EXPECT_EQ(getLaunchCacheResult(), TARNEL_DATABASE_UNAVAILABLE);
    }
    EXPECT_EQ(ask("SELECT * FROM Version").empty(), false);
    ++*steps;
}

TEST_F(Neighbours, writeInTurnAndAreCopiedWhole)
{
    const unsigned int rounds = setting("TARNEL_ROUNDS", 30);
    unsigned int copies = 0;
    const auto write = [&](int process) {
        std::optional<RunningCache> cache(std::in_place);
        stepAndAwait(2);
        for (unsigned int round = 1; round <= rounds; ++round) {
            for (const Export &function : exports()) {
                const std::string code = function.callWith(round % 3);
                // Of which the record may go between its two steps.
                const bool isLate = function.name == "removeAffectFlag" && code == "9";
                EXPECT_TRUE(code[0] == '0' || code == "8" || code == "11" || isLate) << function.name << ' ' << code;
            }
            EXPECT_EQ(addUsers(process * 1000, process * 1000 + 99, round), "0");
        }
        stepAndAwait(5);
        if (process == 1) {
            EXPECT_EQ(addUsers(1, 1, 1), "0");
            cache.reset(); // Before its log is folded, of which the other process knows nothing.
        }
        stepAndAwait(8);
    };
    const auto copy = [&] {
        for (; *steps < 4; ++copies) {
            Connection whole("copy", SQLITE_OPEN_CREATE);
            Connection().copyTo(whole);
            const std::string found =
                whole.ask("PRAGMA integrity_check; SELECT DISTINCT count(*), count(DISTINCT UsersDomainId) "
                          "FROM Users WHERE UsersId >= 1000 GROUP BY UsersId / 1000");
            EXPECT_TRUE(found == "ok\n" || found == "ok\n100|1\n") << found;
        }
        for (const unsigned int awaited : {4U, 7U}) {
            EXPECT_TRUE(waitUntil([&] { return *steps >= awaited; }));
            std::this_thread::sleep_for(2s);
            std::filesystem::copy_file("CacheDb", "copy", std::filesystem::copy_options::overwrite_existing);
            EXPECT_TRUE(content("copy") == content()) << awaited;
            ++*steps;
        }
    };
    std::optional<RunningCache>(std::in_place).reset(); // Makes the file.
    inTwo(write, copy);
    printTried("copies while two processes write", copies);
    printTried("writes and reads of two processes in turn", rounds * exports().size() * 2);
}

} // namespace client
