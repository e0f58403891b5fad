#include "databasefile.h"
#include "exports.h"

#include <gtest/gtest.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

/// Memory and disks that fail, one request after the other.

namespace {

/// A resource of which the requests of one thread can be made to fail.
struct Faults {
    int untilFailure = 0; ///< How many requests from now the one is that fails; 0 for none.
    bool isLasting = false;
    bool hasFailed = false;

    bool failsNow()
    {
        if (untilFailure == 0 || --untilFailure > 0)
            return false;
        hasFailed = true;
        untilFailure = isLasting ? 1 : 0;
        return true;
    }
};

thread_local Faults memoryFaults;
thread_local Faults diskFaults;

std::uintptr_t codeBegin = 0;
std::uintptr_t codeEnd = 0;

/// Whether memory is refused to a caller: only to the library's own code, as Qt does not promise to survive it.
bool isRefused(const void *caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    return memoryFaults.untilFailure != 0 && address >= codeBegin && address < codeEnd && memoryFaults.failsNow();
}

} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" void *__interceptor_malloc(std::size_t size);
#define SYSTEM_MALLOC __interceptor_malloc
#else
extern "C" void *__libc_malloc(std::size_t size);
#define SYSTEM_MALLOC __libc_malloc
#endif

extern "C" __attribute__((visibility("default"), noinline)) void *malloc(std::size_t size) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
}

__attribute__((noinline)) void *operator new(std::size_t size)
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
    if (!diskFaults.failsNow())
        return static_cast<int>(::syscall(SYS_fdatasync, file));
    errno = EIO;
    return -1;
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

namespace client {

namespace {

/// Makes a call's first request fail, then its second, and so on, until the call does not get to that one any more.
void expectEveryFailureIs(const std::string &code, Faults &faults, const Export &function, int leastFailures)
{
    for (const bool isLasting : {false, true}) {
        const TemporaryDirectory directory;
        const RunningCache cache;
        addOneOfEverything();
        // What is written is stored before the record that is handed back is built.
        const bool isStored = code == "3" && !function.isRead() && function.has(Parameter::Kind::StructureOut);
        const auto kept = [isStored] { return isStored ? decltype(content())() : content(); };
        for (int request = 1;; ++request) {
            SCOPED_TRACE(function.name + ", request " + std::to_string(request) +
                         (isLasting ? " and all after it" : ""));
            const auto before = kept();
            faults = {request, isLasting, false};
            const std::string answer = function.callWith(1);
            const bool hasFailed = faults.hasFailed;
            faults = {};
            if (!hasFailed) {
                EXPECT_EQ(answer[0], '0');
                EXPECT_GT(request, leastFailures);
                break;
            }
            ASSERT_EQ(answer, code);
            ASSERT_EQ(kept(), before);
        }
    }
}

/// Finds where the code of the library is.
int findCode(dl_phdr_info *object, std::size_t, void *)
{
    if (std::strstr(object->dlpi_name, "libTarnelLib.so") == nullptr)
        return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        if ((object->dlpi_phdr[i].p_flags & PF_X) != 0) {
            codeBegin = object->dlpi_addr + object->dlpi_phdr[i].p_vaddr;
            codeEnd = codeBegin + object->dlpi_phdr[i].p_memsz;
        }
    }
    return 1;
}

} // namespace

TEST(Faults, everyRefusedAllocationIs3)
{
    ASSERT_EQ(::dl_iterate_phdr(findCode, nullptr), 1);
    for (const Export &function : exports()) {
        if (function.needsCache())
            expectEveryFailureIs("3", memoryFaults, function, function.has(Parameter::Kind::StructureOut) ? 2 : 0);
    }
}

TEST(Faults, everyRefusedWriteIs9)
{
    for (const Export &function : exports()) {
        if (function.needsCache() && !function.isRead())
            expectEveryFailureIs("9", diskFaults, function, 2);
    }
}

} // namespace client
