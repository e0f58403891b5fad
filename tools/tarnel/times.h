#pragma once

#include <cstdint>
#include <string>

namespace tool {

/// A time on the command line: a number as the server gave it, or a date in UTC, such as "2026-03-01" or
/// "2026-03-01 07:30:00", which stands for the seconds since 1970. Throws on anything else.
[[nodiscard]] std::int64_t parseTime(const std::string &text);

/// A time of the file: as the number that it is, or as a date.
[[nodiscard]] std::string timeText(std::int64_t time, bool isUnixTime);

} // namespace tool
