#include "databasefile.h"
#include "exports.h"
#include "failures.h"
#include "faults/faultmemory.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

/// Memory and disks that fail, one request after the other.

namespace {

using faults::Faults;
using faults::libraryMemory;

thread_local Faults diskFaults;
thread_local unsigned int flushes = 0;

} // namespace

// What SQLite writes with. SQLite is told that the disk is full, or that it could not be flushed.
extern "C" __attribute__((visibility("default"))) ssize_t pwrite64(int file, const void *data, std::size_t size,
                                                                   off64_t offset)
{
    if (!diskFaults.failsNow())
        return ::syscall(SYS_pwrite64, file, data, size, offset);
    errno = ENOSPC;
    return -1;
}

extern "C" __attribute__((visibility("default"))) int fdatasync(int file)
{
    ++flushes;
    if (!diskFaults.failsNow())
        return static_cast<int>(::syscall(SYS_fdatasync, file));
    errno = EIO;
    return -1;
}

namespace client {

namespace {

/// Makes a call's first request fail, then its second, and so on, until the call does not get to that one any more.
void expectEveryFailureIs(const std::string &code, Faults &faults, const Export &function, int leastFailures)
{
    std::vector<Step> steps = stepsOf(function.name);
    std::erase_if(steps, [](const Step &step) { return step.code != "9"; });
    for (const bool isLasting : {false, true}) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        addOneOfEverything();
        // What is written is stored before the record that is handed back is built.
        const bool isStored = code == "3" && !function.isRead() && function.handsOutRecords;
        for (int request = 1;; ++request) {
            SCOPED_TRACE(function.name + ", request " + std::to_string(request) +
                         (isLasting ? " and all after it" : ""));
            const std::string before = content();
            flushes = 0;
            takeLog();
            faults = {true, isLasting, request - 1};
            const std::string answer = function.callWith(1);
            if (const bool hasFailed = std::exchange(faults, {}).hasStruck(); !hasFailed) {
                EXPECT_EQ(answer[0], '0');
                EXPECT_GT(request, leastFailures);
                EXPECT_TRUE(flushes > 0 || code == "3") << "acknowledged, and not on the disk";
                break;
            }
            ASSERT_EQ(answer, code);
            if (code == "9") // The disk is written to by the commit, which ends the last step.
                expectLogOf(steps.back());
            ASSERT_TRUE(isStored || content() == before);
        }
    }
}

} // namespace

TEST(Faults, everyRefusedAllocationIs3)
{
    for (const Export &function : exports())
        expectEveryFailureIs("3", libraryMemory, function, function.handsOutRecords ? 2 : 0);
}

TEST(Faults, everyRefusedWriteIs9)
{
    for (const Export &function : exports()) {
        if (!function.isRead())
            expectEveryFailureIs("9", diskFaults, function, 2);
    }
}

} // namespace client
