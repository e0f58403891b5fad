#include "databasefile.h"
#include "exports.h"
#include "failures.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

/// Memory and disks that fail, one request after the other.

namespace {

/// A resource of which the requests of one thread can be made to fail.
struct Faults {
    bool isArmed = false;
    bool isLasting = false; ///< Whether they go on failing.
    int granted = 0;        ///< How many are granted before; below 0 after the first that was not.

    bool failsNow() { return isArmed && --granted < 0 && (isLasting || granted == -1); }
};

thread_local Faults memoryFaults;
thread_local Faults diskFaults;
thread_local unsigned int flushes = 0;

// Memory is asked for before a sanitizer is ready.
#define UNSANITIZED __attribute__((noinline, no_sanitize("address", "thread")))

/// Whether code is the library's own.
UNSANITIZED bool isOfLibrary(void *code)
{
    dl_find_object object;
    return ::_dl_find_object(code, &object) == 0 &&
           std::strstr(object.dlfo_link_map->l_name, "libTarnelLib.so") != nullptr;
}

/// Whether memory is refused to a caller: only to the library's own code, as Qt does not promise to survive it.
UNSANITIZED bool isRefused(void *caller)
{
    return memoryFaults.isArmed && isOfLibrary(caller) && memoryFaults.failsNow();
}

} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" void *__interceptor_malloc(std::size_t size);
extern "C" void *__interceptor_realloc(void *block, std::size_t size);
#define SYSTEM_MALLOC __interceptor_malloc
#define SYSTEM_REALLOC __interceptor_realloc
#else
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_realloc(void *block, std::size_t size);
#define SYSTEM_MALLOC __libc_malloc
#define SYSTEM_REALLOC __libc_realloc
#endif

extern "C" UNSANITIZED __attribute__((visibility("default"))) void *malloc(std::size_t size) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
}

extern "C" UNSANITIZED __attribute__((visibility("default"))) void *realloc(void *block, std::size_t size) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_REALLOC(block, size);
}

UNSANITIZED void *operator new(std::size_t size)
{
    void *block = isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

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

__attribute__((noinline)) void operator delete(void *block) noexcept
{
    std::free(block);
}

__attribute__((noinline)) void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
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
            if (const bool hasFailed = std::exchange(faults, {}).granted < 0; !hasFailed) {
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
        expectEveryFailureIs("3", memoryFaults, function, function.handsOutRecords ? 2 : 0);
}

TEST(Faults, everyRefusedWriteIs9)
{
    for (const Export &function : exports()) {
        if (!function.isRead())
            expectEveryFailureIs("9", diskFaults, function, 2);
    }
}

} // namespace client
