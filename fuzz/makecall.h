#pragma once

#include "functions.h"
#include "generator.h"

namespace fuzz {

/// A line with a call of a function, as it wants it or nearly.
std::string makeCall(const Function &function, Generator &generator);

} // namespace fuzz
