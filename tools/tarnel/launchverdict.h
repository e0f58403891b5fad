#pragma once

#include <string>

namespace tool {

class CacheFile;

/// What a launch would come to now.
struct LaunchVerdict {
    unsigned int code;
    std::string reason;
    /// Whether the content is such that a launch does not keep it. It is then replaced, unless the code is
    /// TARNEL_DATABASE_UNAVAILABLE.
    bool isRefused;
};

/// Judges a cache as a launch does, with the library's own questions about version and tables, and does nothing about
/// it. What only the launch itself can meet, such as a full disk, is not foreseen.
[[nodiscard]] LaunchVerdict launchVerdict(CacheFile &cache);

} // namespace tool
