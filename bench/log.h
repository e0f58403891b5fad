#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

/// The log that SQLite keeps beside the library's file. Its size alone is asked for: whoever opened it while the
/// library is at work would take the file's locks away.
namespace bench {

/// Watches the log for so long, and returns its greatest size in bytes.
std::uintmax_t greatestLog(std::chrono::duration<double> time);

constexpr double longestEmptying = 10; ///< Seconds.

/// Waits until the log is empty, and returns how many seconds that took; nothing if it took too long.
std::optional<double> secondsUntilEmptyLog();

} // namespace bench
