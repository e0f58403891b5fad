#include "runtime/lifecycle.h"

#include <tarnel/tarnel.h>

namespace runtime = tarnelLib::runtime;

void launchCache()
{
    runtime::startCache();
}

void exitCache()
{
    runtime::stopCache();
}

unsigned int getState()
{
    return runtime::state();
}

unsigned int getLaunchCacheResult()
{
    return runtime::launchResult();
}
