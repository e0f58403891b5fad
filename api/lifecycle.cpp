#include "runtime/lifecycle.h"

namespace runtime = tarnelLib::runtime;

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
    if (access.controller() == nullptr)
        return TARNEL_NOT_AVAILABLE;
    return static_cast<unsigned int>(access.controller()->getConnectToDatabaseResult());
}
