#include "runtime/lifecycle.h"

namespace runtime = tarnelLib::runtime;
using tarnelLib::Result;

void launchCache()
{
    runtime::startCache();
}

void exitCache()
{
    runtime::stopCache();
}

// These never wait for a connection.

unsigned int getState()
{
    const runtime::CacheAccess access;
    if (access.controller() == nullptr)
        return TARNEL_STATE_NONE;
    return access.controller()->getState();
}

unsigned int getLaunchCacheResult()
{
    const runtime::CacheAccess access;
    Result result = Result::NotAvailable;
    if (access.controller() == nullptr)
        runtime::CacheAccess::noteAbsence();
    else
        result = access.controller()->getConnectToDatabaseResult();
    if (result == Result::DatabaseUnavailable)
        tarnelLib::diagnostics::note(access.controller()->connectFailure());
    if (result == Result::DatabaseUnavailable || result == Result::NotAvailable)
        tarnelLib::diagnostics::setReason("getLaunchCacheResult", result);
    return static_cast<unsigned int>(result);
}
