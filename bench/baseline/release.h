#pragma once

#include "bench/answers.h"

namespace bench::rows {

/// Releases a block of structures with all that they hold, for events, devices, users, sites and locales.
template <class Api>
void release(Api *first, unsigned int count);

} // namespace bench::rows
