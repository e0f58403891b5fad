#include "diagnostics/reason.h"

#include <pthread.h>

#include <new>
#include <utility>

namespace tarnelLib::diagnostics {

namespace {

/// What a thread remembers from its first failed call on.
struct Memory {
    Detail detail;
    FixedText<512> reason;
};

// The system gives a library that is loaded late room for its threads' variables when a thread first uses them, and
// ends the process if it has no memory then. These two are small enough for the room that it keeps in reserve.
[[gnu::tls_model("initial-exec")]] constinit thread_local Memory *ownMemory = nullptr;
[[gnu::tls_model("initial-exec")]] constinit thread_local const char *ownReason = "";

void release(void *memory)
{
    delete static_cast<Memory *>(memory);
    ownMemory = nullptr;
    ownReason = "";
}

/// Has the memory released when its thread ends. A variable with a destructor would need memory for that, too.
struct Key {
    pthread_key_t key{};
    bool isMade = ::pthread_key_create(&key, release) == 0;
};

const Key threadEnd;

Memory *memory() noexcept
{
    if (ownMemory == nullptr && threadEnd.isMade) {
        auto *const made = new (std::nothrow) Memory;
        if (made != nullptr && ::pthread_setspecific(threadEnd.key, made) == 0)
            ownMemory = made;
        else
            delete made;
    }
    return ownMemory;
}

} // namespace

Detail *newDetail() noexcept
{
    Memory *const own = memory();
    return own != nullptr ? &(own->detail = {}) : nullptr;
}

Detail takeDetail() noexcept
{
    return ownMemory != nullptr ? std::exchange(ownMemory->detail, {}) : Detail();
}

void setReason(const char *function, Result result) noexcept
{
    const char *const general = describe(result).reason;
    Memory *const own = memory();
    if (own == nullptr) {
        ownReason = general;
        return;
    }
    const Detail detail = takeDetail();
    own->reason = {};
    own->reason.append(function);
    own->reason.append(": ");
    own->reason.append(detail.isEmpty() || result == Result::AllocationFailed ? general : detail.view());
    ownReason = own->reason.terminated();
}

const char *reason() noexcept
{
    return ownReason;
}

} // namespace tarnelLib::diagnostics
