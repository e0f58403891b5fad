#include "databasefile.h"
#include "exports.h"
#include "failures.h"
#include "faults/faultmemory.h"
#include "faults/faultvfs.h"
#include "heldfiles.h"

#include <QCoreApplication>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <optional>

/// Launches under bad circumstances. Whatever they are, and whatever the file holds: the records are all there
/// afterwards, and where a launch gives 0 they can be read under the circumstance.
namespace client {

namespace {

namespace fs = std::filesystem;
using faults::Failure;
using faults::Faults;

const bool isPrepared = (faults::useSqliteMemory(), faults::useFaultVfs(), true);

enum Times { Once = 1, Lasting = 2, Both = 3 };

struct Circumstance {
    std::string name;
    std::function<void(Faults)> begin; ///< Called on the launching thread.
    Times times;
    std::optional<unsigned int> code = {}; ///< Where it lasts from the beginning, of a file that was left cleanly.
    std::function<bool()> hasStruck = [] { return false; }; ///< Ends it there, and tells whether it was met.
};

struct Outcome {
    unsigned int code = TARNEL_NOT_AVAILABLE; ///< Stays so where there is no memory for a launch at all.
    bool hasStruck = false;
};

std::map<unsigned int, int> counts;

/// Launches the cache under a circumstance, reads where that must be possible, and exits.
Outcome launchUnder(const Circumstance &circumstance, Faults requests, const Held &held)
{
    Outcome outcome;
    std::atomic<bool> isEnded = false;
    std::jthread launch([&] {
        circumstance.begin(requests);
        launchCache();
        outcome.hasStruck = circumstance.hasStruck();
        isEnded = true;
    });
    EXPECT_TRUE(waitUntil([&] { return isEnded || getState() == TARNEL_STATE_RUNNING; }));
    if (!isEnded) {
        outcome.code = getLaunchCacheResult();
        const bool isDiskFailing = faults::effectsSoFar().failed > 0;
        const std::string users = outcome.code == TARNEL_SUCCESS ? call("getUsers") : held.users;
        const bool isFirstFailure = !isDiskFailing && faults::effectsSoFar().failed > 0;
        EXPECT_TRUE(users == held.users || (users == "7" && isFirstFailure)) << "what was found good must be read";
        exitCache();
    }
    launch.join();
    outcome.hasStruck |= faults::endFailures().failed > 0;
    ++counts[outcome.code];
    return outcome;
}

/// Launches again, without a circumstance.
void expectWhole(const Held &held)
{
    const unsigned int expected = fs::exists("CacheDb") ? TARNEL_SUCCESS : TARNEL_DATABASE_CREATED;
    {
        const RunningCache cache;
        ASSERT_EQ(getLaunchCacheResult(), expected);
        ASSERT_EQ(call("getUsers"), held.users);
    }
    const Files files = filesHere();
    ASSERT_TRUE(files.size() == 1 && files.contains("CacheDb")) << "a clean exit leaves one file";
    EXPECT_EQ(files.at("CacheDb").substr(18, 2), "\1\1") << "that needs no other";
    EXPECT_TRUE(held.isNothing() || content() == held.content);
}

/// The file without its header, in which a disk may fail to be told that the log is not used after all.
std::string pagesOf(Files files)
{
    return files["CacheDb"].erase(0, 100);
}

Outcome expectKept(const Circumstance &circumstance, Faults requests, const Held &held)
{
    held.lay();
    const Outcome outcome = launchUnder(circumstance, requests, held);
    const unsigned int well = held.isNothing() ? TARNEL_DATABASE_CREATED : TARNEL_SUCCESS;
    EXPECT_TRUE(outcome.code == well || outcome.code == TARNEL_DATABASE_UNAVAILABLE ||
                outcome.code == TARNEL_NOT_AVAILABLE)
        << outcome.code;
    if (outcome.code == TARNEL_DATABASE_UNAVAILABLE && held.files.size() <= 1) {
        EXPECT_TRUE(pagesOf(filesHere()) == pagesOf(held.files)) << "changed";
        EXPECT_EQ(fs::exists("CacheDb"), !held.isNothing());
    }
    expectWhole(held);
    return outcome;
}

/// Makes one request fail, or all from there on, for one after the other until a launch does not get that far. Of so
/// many requests one is tried, for each file another.
void expectKeptUnder(const Circumstance &circumstance, unsigned int ofSoMany, const Held &held)
{
    for (const Times times : {Once, Lasting}) {
        const auto first = static_cast<int>(held.name.size() % ofSoMany);
        bool isReached = (circumstance.times & times) != 0;
        for (int n = first; isReached && !testing::Test::HasFailure(); n += static_cast<int>(ofSoMany)) {
            SCOPED_TRACE(held.name + ", " + circumstance.name + " " + std::to_string(n) +
                         (times == Lasting ? " and on" : ""));
            const Outcome outcome = expectKept(circumstance, {true, times == Lasting, n}, held);
            isReached = outcome.hasStruck;
            if (times == Lasting && n == 0 && held.isClean()) {
                EXPECT_EQ(outcome.code, circumstance.code.value_or(outcome.code));
            }
        }
    }
}

} // namespace

class Launch : public DirectoryTest
{
    void SetUp() override
    {
#ifdef __SANITIZE_THREAD__
        GTEST_SKIP() << "ThreadSanitizer does not let a child start threads";
#endif
    }
};

TEST_F(Launch, keepsTheFileOnAFailingDisk)
{
    using namespace faults;
    const auto disk = [](unsigned int operations, Failure failure) {
        return [=](Faults requests) { failOperations(operations, failure, requests); };
    };
    const Circumstance disks[] = {
        {"operation", disk(~0U, Failure::InputOutput), Once},
        {"read", disk(Read, Failure::InputOutput), Lasting, 6},
        {"look", disk(Look, Failure::InputOutput), Lasting, 6},
        {"lock", disk(Lock, Failure::InputOutput), Lasting, 6},
        {"lock of a held file", disk(Lock, Failure::Locked), Both, 6},
        {"write", disk(Write, Failure::InputOutput), Lasting, 0},
        {"flush", disk(Sync, Failure::InputOutput), Lasting, 0},
        {"truncation or deletion", disk(Truncate | Delete, Failure::InputOutput), Lasting, 0},
        {"shared memory", disk(SharedMemory, Failure::InputOutput), Lasting, 0},
        {"write on a full disk", disk(Write | SharedMemory, Failure::DiskFull), Both, 0},
        {"open without descriptors", disk(Open | SharedMemory, Failure::NoDescriptor), Both, 6},
        {"open without permission", disk(Open | Delete, Failure::NoPermission), Both, 6},
    };
    for (const Held &held : allHeld()) {
        for (const Circumstance &each : disks)
            expectKeptUnder(each, held.isNothing() ? setting("TARNEL_STEP", 5) : 1, held);
    }
}

TEST_F(Launch, keepsTheFileWhereMemoryIsShort)
{
    const Circumstance circumstances[] = {
        {"allocation",
         [](Faults requests) { faults::libraryMemory = requests; },
         Both,
         {},
         [] { return std::exchange(faults::libraryMemory, {}).hasStruck(); }},
        {"allocation of SQLite's",
         [](Faults requests) { faults::sqliteMemory = requests; },
         Both,
         {},
         [] { return std::exchange(faults::sqliteMemory, {}).hasStruck(); }},
    };
    for (const Held &held : allHeld()) {
        for (const Circumstance &each : circumstances)
            expectKeptUnder(each, setting("TARNEL_STEP", 41), held);
        EXPECT_LT(counts[TARNEL_NOT_AVAILABLE] * 5, counts[TARNEL_DATABASE_UNAVAILABLE]) << "it mostly runs";
    }
}

TEST_F(Launch, keepsTheFileWithoutDescriptors)
{
    { // What Qt loads once needs descriptors, and so does a sanitizer that meets a class for the first time.
        const RunningCache cache;
        ask("DROP TABLE Users");
        EXPECT_EQ(call("getUsers"), "7");
    }
    int free = 0;
    const auto limit = [](int descriptors) {
        const rlimit limits = {static_cast<rlim_t>(descriptors), 1024};
        ::setrlimit(RLIMIT_NOFILE, &limits);
    };
    const auto begin = [&](Faults requests) {
        const int lowest = ::open("/dev/null", O_RDONLY);
        ::close(lowest);
        free = requests.granted;
        limit(lowest + free);
    };
    const auto end = [&] {
        limit(1024);
        return free < 3;
    };
    for (const Held &held : allHeld())
        expectKeptUnder({"descriptors", begin, Lasting, 6, end}, 1, held);
}

TEST_F(Launch, keepsTheFileWhereThereIsNoPermission)
{
    struct Modes {
        const char *name;
        mode_t directory;
        mode_t file;
        unsigned int code; ///< Of a file that was left cleanly.
    };
    const Modes cases[] = {
        {"a read-only directory", 0555, 0666, 0},
        {"a read-only file", 0777, 0444, 0},
        {"both", 0555, 0444, 0},
        {"a closed directory", 0, 0666, 6},
        {"an unreadable file", 0777, 0, 102},
        {"an unreadable file in a read-only directory", 0555, 0, 6},
    };
    for (const Held &held : allHeld()) {
        for (const Modes &modes : cases) {
            SCOPED_TRACE(held.name + ", " + modes.name);
            held.lay();
            for (const auto &entry : held.files)
                ::chmod(entry.first.c_str(), modes.file);
            ::chmod(".", modes.directory);
            const bool isReplaced = modes.code == 102 && !held.isNothing();
            inChild([&] {
                ASSERT_TRUE(::geteuid() != 0 || ::setuid(65534) == 0);
                const RunningCache cache;
                const unsigned int code = getLaunchCacheResult();
                EXPECT_TRUE(held.isClean() || isReplaced ? code == modes.code
                                                         : code == 0 || code == 6 || held.isNothing())
                    << code;
                EXPECT_EQ(call("getUsers"), code == 6 || isReplaced ? "7" : held.users);
                EXPECT_TRUE(!held.isClean() || call("clearAll") == "9");
            });
            ::chmod(".", 0700);
            if (!isReplaced)
                expectWhole(held);
        }
    }
}

TEST_F(Launch, logsWhyTheDiskGivesNoDatabase)
{
    const std::tuple<faults::Operation, Failure, const char *> causes[] = {
        {faults::Open, Failure::NoDescriptor, "unable to open database file: Too many open files"},
        {faults::Read, Failure::InputOutput, "disk I/O error: Input/output error"},
        {faults::Lock, Failure::Locked, "database is locked"},
    };
    for (const auto &[operation, failure, log] : causes) {
        allHeld()[2].lay();
        faults::failOperations(operation, failure, {true, true, 0});
        takeLog();
        const RunningCache cache;
        EXPECT_EQ(takeLog(), Lines{std::string("No database: ") + log});
        EXPECT_LT(faults::endFailures().waited, std::chrono::seconds(7)) << log;
    }
}

TEST_F(Launch, saysThatQtHasNoDriverAndMakesNoFile)
{
    const auto launchWithoutPlugins = [] {
        QCoreApplication::setLibraryPaths({});
        const RunningCache cache;
        const auto code = static_cast<int>(getLaunchCacheResult());
        const bool isFileMade = !fs::is_empty(".");
        fs::remove_all(fs::current_path());
        ::_exit(isFileMade ? 1 : code);
    };
    // In a process that has loaded no driver yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(launchWithoutPlugins(), testing::ExitedWithCode(6), "No database: Qt has no driver for SQLite");
}

} // namespace client
