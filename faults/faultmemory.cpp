#include "faults/faultmemory.h"

#include <dlfcn.h>
#include <link.h>
#include <sqlite3.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace faults {

constinit thread_local Faults libraryMemory;
constinit thread_local Faults sqliteMemory;

} // namespace faults

namespace {

// Memory is asked for before a sanitizer is ready.
#define UNSANITIZED __attribute__((noinline, no_sanitize("address", "thread")))

/// Whether code is the library's own.
UNSANITIZED bool isOfLibrary(void *code)
{
    dl_find_object object;
    return ::_dl_find_object(code, &object) == 0 &&
           std::strstr(object.dlfo_link_map->l_name, "libTarnelLib.so") != nullptr;
}

UNSANITIZED bool isRefused(void *caller)
{
    return faults::libraryMemory.isArmed && isOfLibrary(caller) && faults::libraryMemory.failsNow();
}

} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" void *__interceptor_malloc(std::size_t size);
extern "C" void *__interceptor_realloc(void *block, std::size_t size);
#define SYSTEM_MALLOC __interceptor_malloc
#define SYSTEM_REALLOC __interceptor_realloc
#else
namespace {

/// What the program would call without this file; another tool may have taken its place.
template <class Function>
UNSANITIZED Function *next(const char *name)
{
    static constinit Function *found = nullptr;
    if (found == nullptr)
        found = reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
    return found;
}

} // namespace
#define SYSTEM_MALLOC (next<void *(std::size_t)>("malloc"))
#define SYSTEM_REALLOC (next<void *(void *, std::size_t)>("realloc"))
#endif

extern "C" UNSANITIZED __attribute__((visibility("default"))) void *malloc(std::size_t size) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
}

extern "C" UNSANITIZED __attribute__((visibility("default"))) void *realloc(void *ptr, std::size_t size) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_REALLOC(ptr, size);
}

UNSANITIZED void *operator new(std::size_t size)
{
    void *block = isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

UNSANITIZED void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return isRefused(__builtin_return_address(0)) ? nullptr : SYSTEM_MALLOC(size);
}

__attribute__((noinline)) void operator delete(void *block) noexcept
{
    std::free(block);
}

__attribute__((noinline)) void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

namespace faults {

void useSqliteMemory()
{
    static sqlite3_mem_methods real;
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real);
    sqlite3_mem_methods refusing = real;
    refusing.xMalloc = [](int size) { return sqliteMemory.failsNow() ? nullptr : real.xMalloc(size); };
    refusing.xRealloc = [](void *block, int size) {
        return sqliteMemory.failsNow() ? nullptr : real.xRealloc(block, size);
    };
    sqlite3_config(SQLITE_CONFIG_MALLOC, &refusing);
}

} // namespace faults
