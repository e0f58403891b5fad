#pragma once

#include <string>
#include <vector>

namespace bench {

/// Starts this program anew, in the current directory, and returns what it prints. An exception if it fails.
std::string outputOfOwnProcess(const std::vector<std::string> &arguments);

} // namespace bench
