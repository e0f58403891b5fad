#include "databasefile.h"
#include "exports.h"
#include "faults/faultmemory.h"
#include "faults/faultvfs.h"
#include "heldfiles.h"

#include <QCoreApplication>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <optional>

/// Launches under bad circumstances. Whatever they are, and whatever the file holds: the records are all there
/// afterwards, and where a launch gives 0 they can be read under the circumstance.
namespace client {

namespace {

namespace fs = std::filesystem;
using faults::Failure;
using faults::Faults;

const bool isPrepared = [] {
    faults::useSqliteMemory();
    faults::useFaultVfs();
    return true;
}();

struct Circumstance {
    std::string name;
    std::function<void(Faults)> begin;                      ///< Called on the launching thread.
    std::function<bool()> hasStruck = [] { return false; }; ///< Ends it there, and tells whether it was met.
};

struct Outcome {
    unsigned int code = TARNEL_NOT_AVAILABLE; ///< Stays so where there is no memory for a launch at all.
    bool hasStruck = false;
};

std::map<unsigned int, int> counts;

void printCounts(const std::string &name)
{
    std::cout << name << ':';
    for (const auto &[code, count] : std::exchange(counts, {}))
        std::cout << ' ' << count << " launches gave " << code << ';';
    std::cout << '\n';
}

/// Launches the cache under a circumstance, reads where that must be possible, and exits.
Outcome launchUnder(const Circumstance &circumstance, Faults requests, const Held &held)
{
    Outcome outcome;
    std::atomic<bool> isEnded = false;
    std::thread launch([&] {
        circumstance.begin(requests);
        launchCache();
        outcome.hasStruck = circumstance.hasStruck();
        isEnded = true;
    });
    EXPECT_TRUE(waitUntil([&] { return isEnded || getState() == TARNEL_STATE_RUNNING; }));
    if (!isEnded) {
        outcome.code = getLaunchCacheResult();
        const bool isDiskFailing = faults::failedOperations() > 0;
        const std::string users = outcome.code == TARNEL_SUCCESS ? call("getUsers") : held.users;
        const bool isFirstFailure = !isDiskFailing && faults::failedOperations() > 0;
        EXPECT_TRUE(users == held.users || (users == "7" && isFirstFailure)) << "what was found good must be read";
        exitCache();
    }
    launch.join();
    outcome.hasStruck |= faults::endFailures() > 0;
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
std::optional<std::string> pagesOf(const Files &files)
{
    const auto file = files.find("CacheDb");
    return file == files.end() ? std::nullopt : std::optional(file->second.substr(100));
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
        EXPECT_TRUE(pagesOf(filesHere()) == pagesOf(held.files)) << "neither changed nor made";
    }
    expectWhole(held);
    return outcome;
}

/// Makes one request fail, or all from there on, for one after the other until a launch does not get that far; gives
/// the code of the first launch. Of so many requests one is tried, for each file another.
unsigned int expectKeptAtEach(const Circumstance &circumstance, bool isLasting, unsigned int ofSoMany, const Held &held)
{
    const auto first = static_cast<int>(held.name.size() % ofSoMany);
    std::optional<unsigned int> code;
    bool isReached = true;
    for (int n = first; isReached && !testing::Test::HasFailure(); n += static_cast<int>(ofSoMany)) {
        SCOPED_TRACE(held.name + ", " + circumstance.name + " " + std::to_string(n) + (isLasting ? " and on" : ""));
        const Outcome outcome = expectKept(circumstance, {true, isLasting, n}, held);
        isReached = outcome.hasStruck;
        code = code.value_or(outcome.code);
    }
    return code.value_or(TARNEL_NOT_AVAILABLE);
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
    enum Times { Once = 1, Lasting = 2, Both = 3 };
    struct Disk {
        const char *name;
        unsigned int operations;
        Failure failure;
        Times times;
        unsigned int code; ///< Where it fails from the beginning, of a file that was left cleanly.
    };
    const Disk disks[] = {
        {"operation", ~0U, Failure::InputOutput, Once, 6},
        {"read", Read, Failure::InputOutput, Lasting, 6},
        {"look", Look, Failure::InputOutput, Lasting, 6},
        {"lock", Lock, Failure::InputOutput, Lasting, 6},
        {"lock of a held file", Lock, Failure::Locked, Both, 6},
        {"write", Write, Failure::InputOutput, Lasting, 0},
        {"flush", Sync, Failure::InputOutput, Lasting, 0},
        {"truncation or deletion", Truncate | Delete, Failure::InputOutput, Lasting, 0},
        {"shared memory", SharedMemory, Failure::InputOutput, Lasting, 0},
        {"write on a full disk", Write | SharedMemory, Failure::DiskFull, Both, 0},
        {"open without descriptors", Open | SharedMemory, Failure::NoDescriptor, Both, 6},
        {"open without permission", Open | Delete, Failure::NoPermission, Both, 6},
    };
    const unsigned int ofSoMany = setting("TARNEL_STEP", 5);
    for (const Held &held : allHeld()) {
        for (const Disk &disk : disks) {
            const auto begin = [&](Faults requests) { failOperations(disk.operations, disk.failure, requests); };
            for (const Times times : {Once, Lasting}) {
                if ((disk.times & times) == 0)
                    continue;
                const unsigned int code =
                    expectKeptAtEach({disk.name, begin}, times == Lasting, held.isNothing() ? ofSoMany : 1, held);
                EXPECT_TRUE(!held.isClean() || times == Once || code == disk.code) << disk.name << " gives " << code;
            }
        }
        printCounts(held.name);
    }
}

TEST_F(Launch, keepsTheFileWhereMemoryIsShort)
{
    const Circumstance circumstances[] = {
        {"allocation", [](Faults requests) { faults::libraryMemory = requests; },
         [] { return std::exchange(faults::libraryMemory, {}).hasStruck(); }},
        {"allocation of SQLite's", [](Faults requests) { faults::sqliteMemory = requests; },
         [] { return std::exchange(faults::sqliteMemory, {}).hasStruck(); }},
    };
    for (const Held &held : allHeld()) {
        for (const Circumstance &each : circumstances) {
            for (const bool isLasting : {false, true})
                expectKeptAtEach(each, isLasting, setting("TARNEL_STEP", 41), held);
        }
        EXPECT_LT(counts[TARNEL_NOT_AVAILABLE] * 5, counts[TARNEL_DATABASE_UNAVAILABLE]) << "it mostly runs";
        printCounts(held.name);
    }
}

TEST_F(Launch, keepsTheFileWithoutDescriptors)
{
    { // What Qt loads once needs descriptors, and so does a sanitizer that meets a class for the first time.
        const RunningCache cache;
        ask("DROP TABLE Users");
        EXPECT_EQ(call("getUsers"), "7");
    }
    std::vector<int> taken;
    const auto take = [&](Faults free) {
        const rlimit limit = {64, 1024};
        ::setrlimit(RLIMIT_NOFILE, &limit);
        while ((taken.empty() ? 0 : taken.back()) >= 0)
            taken.push_back(::open("/dev/null", O_RDONLY));
        for (taken.pop_back(); free.granted > 0; --free.granted, taken.pop_back())
            ::close(taken.back());
    };
    const auto release = [&] {
        for (const int file : std::exchange(taken, {}))
            ::close(file);
        return true;
    };
    for (const Held &held : allHeld()) {
        for (int free = 0; free <= 3; ++free) {
            SCOPED_TRACE(held.name + ", " + std::to_string(free) + " free descriptors");
            const Outcome outcome = expectKept({"descriptors", take, release}, {true, true, free}, held);
            EXPECT_TRUE(outcome.code == TARNEL_DATABASE_UNAVAILABLE || free > 0);
        }
        printCounts(held.name);
    }
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

TEST_F(Launch, logsWhyThereIsNoDatabase)
{
    struct Cause {
        const char *command;
        unsigned int operations;
        Failure failure;
        unsigned int code;
        const char *log;
    };
    const Cause causes[] = {
        {"true", 0, {}, 0, ""},
        {"rm CacheDb", 0, {}, 100, ""},
        {"echo garbage >CacheDb",
         0,
         {},
         103,
         "execute error; file is not a database Unable to execute statement; "
         "get version error; file is not a database Unable to execute statement; "},
        {"rm CacheDb; mkdir CacheDb", 0, {}, 6, "No database: unable to open database file: Is a directory; "},
        {"rm CacheDb; ln -s nowhere CacheDb",
         0,
         {},
         6,
         "No database: it cannot be made: File exists; Unable to restore database; "},
        {"true", faults::Open, Failure::NoDescriptor, 6,
         "No database: unable to open database file: Too many open files; "},
        {"true", faults::Read, Failure::InputOutput, 6, "No database: disk I/O error: Input/output error; "},
        {"true", faults::Lock, Failure::Locked, 6, "No database: database is locked; "},
    };
    static std::string log;
    for (const Cause &cause : causes) {
        SCOPED_TRACE(cause.command + std::string(" ") + cause.log);
        inChild([&] {
            allHeld()[2].lay();
            ASSERT_EQ(std::system(cause.command), 0);
            faults::failOperations(cause.operations, cause.failure, {true, true, 0});
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &line) {
                if (type == QtDebugMsg)
                    log += line.toStdString() + "; ";
            });
            const RunningCache cache;
            EXPECT_EQ(getLaunchCacheResult(), cause.code);
            EXPECT_EQ(log, cause.log);
        });
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
