#pragma once

#include "controller/controller.h"
#include "diagnostics/reason.h"

/// The cache from its launch to its exit, and the calls in between.
namespace tarnelLib::runtime {

/// Connects to the database and runs an event loop on this thread until an exit is asked for. Returns at once if a
/// cache is running already, or if this process was forked from one in which it is.
void startCache() noexcept;

/// Asks the running launch to end, waits for the calls in progress and closes the file.
void stopCache() noexcept;

struct Launch;

/// A call in progress, which an exit waits for. It has the controller of the running cache: null if no cache is
/// running, or if it runs in the process that this one was forked from.
class CacheAccess
{
public:
    CacheAccess();
    CacheAccess(const CacheAccess &) = delete;
    CacheAccess &operator=(const CacheAccess &) = delete;
    ~CacheAccess();

    [[nodiscard]] controller::Controller *controller() const { return m_controller; }
    /// Notes why there is no controller.
    static void noteAbsence() noexcept;

private:
    Launch *m_launch = nullptr;
    controller::Controller *m_controller = nullptr;
};

/// The one way into the library for a call: refuses it when no cache is running, lets no exception out, and keeps the
/// reason of a failure. The function is the exported one, which the compiler knows where that calls this directly.
template <class Operation>
unsigned int withController(Operation &&operation, const char *function = __builtin_FUNCTION()) noexcept
{
    Result result = Result::NotAvailable;
    try {
        const CacheAccess access;
        if (controller::Controller *controller = access.controller())
            result = operation(*controller);
        else
            CacheAccess::noteAbsence();
    } catch (const std::bad_alloc &) {
        result = Result::AllocationFailed;
    } catch (...) {
        result = Result::NotAvailable; // The call got no connection any more.
        diagnostics::note("the cache is being exited");
    }
    if (result != Result::Success)
        diagnostics::setReason(function, result);
    return static_cast<unsigned int>(result);
}

} // namespace tarnelLib::runtime
