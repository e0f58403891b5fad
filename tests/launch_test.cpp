#include "circumstances.h"
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

struct Outcome {
    unsigned int code = TARNEL_NOT_AVAILABLE; ///< Stays so where there is no memory for a launch at all.
    bool hasStruck = false;
};

/// Launches the cache under a circumstance, reads where that must be possible, and exits.
Outcome launchUnder(const Circumstance &circumstance, Faults requests, const Held &held)
{
    Outcome outcome;
    std::atomic<bool> isEnded = false;
    std::jthread launch([&] {
        circumstance.begin(requests);
        launchCache();
        outcome.hasStruck = circumstance.end();
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
    lay(held.files);
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

void expectKeptUnder(const Circumstance &circumstance, const Held &held, Tally &tally)
{
    SCOPED_TRACE(held.name);
    tryEach(circumstance, [&](Faults requests) {
        const Outcome outcome = expectKept(circumstance, requests, held);
        if (requests.isLasting && requests.granted == 0 && held.isClean()) {
            EXPECT_EQ(outcome.code, circumstance.launch.value_or(outcome.code));
        }
        tally.count(outcome.hasStruck);
        return outcome.hasStruck;
    });
}

} // namespace

using Launch = ParentTest;

TEST_F(Launch, keepsTheFileOnAFailingDisk)
{
    std::vector<Circumstance> disks = failingDisks();
    disks[0].times = Once; // A disk may be gone for good right after a launch that has found all well.
    Tally tally("launches and exits on a failing disk");
    for (const Held &held : allHeld()) {
        for (const Circumstance &each : disks)
            expectKeptUnder(each, held, tally);
    }
}

TEST_F(Launch, keepsTheFileWhereMemoryIsShort)
{
    Tally tally("launches and exits that are short of memory");
    for (const Held &held : allHeld()) {
        for (const Circumstance &each : shortMemory())
            expectKeptUnder(each, held, tally);
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
    Tally tally("launches and exits without descriptors");
    for (const Held &held : allHeld())
        expectKeptUnder({"descriptors", Lasting, begin, end, 6}, held, tally);
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
            lay(held.files);
            for (const auto &entry : held.files)
                ::chmod(entry.first.c_str(), modes.file);
            ::chmod(".", modes.directory);
            const bool isReplaced = modes.code == 102 && !held.isNothing();
            Child([&] {
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

TEST_F(Launch, foldsTheLogThatAKillHasLeft)
{
    lay(allHeld()[1].files);
    const RunningCache cache;
    EXPECT_TRUE(waitUntil([] { return fs::file_size("CacheDb-wal") == 0; }));
}

TEST_F(Launch, logsWhyTheDiskGivesNoDatabase)
{
    const std::tuple<faults::Operation, Failure, const char *> causes[] = {
        {faults::Open, Failure::NoDescriptor, "unable to open database file: Too many open files"},
        {faults::Read, Failure::InputOutput, "disk I/O error: Input/output error"},
        {faults::Lock, Failure::Locked, "database is locked"},
    };
    for (const auto &[operation, failure, log] : causes) {
        lay(allHeld()[2].files);
        faults::failOperations(operation, failure, {true, true, 0});
        takeLog();
        const RunningCache cache;
        EXPECT_EQ(takeLog(), Lines{std::string("No database: ") + log});
        EXPECT_LT(faults::endFailures().waited, std::chrono::seconds(7)) << log;
    }
}

} // namespace client
