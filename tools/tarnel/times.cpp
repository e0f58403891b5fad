#include "tools/tarnel/times.h"

#include "tools/tarnel/command.h"

#include <fmt/format.h>

#include <charconv>
#include <ctime>

namespace tool {

std::int64_t parseTime(const std::string &text)
{
    std::int64_t number = 0;
    const char *const end = text.data() + text.size();
    if (const auto [last, error] = std::from_chars(text.data(), end, number); error == std::errc() && last == end)
        return number;
    for (const char *format : {"%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M", "%Y-%m-%d %T", "%Y-%m-%dT%T"}) {
        std::tm parts{};
        if (const char *const last = ::strptime(text.c_str(), format, &parts); last != nullptr && *last == '\0')
            return ::timegm(&parts);
    }
    throw CLI::ValidationError(text, "is no time: type a number, or a date in UTC such as 2026-03-01 or "
                                     "\"2026-03-01 07:30:00\"");
}

std::string timeText(std::int64_t time, bool isUnixTime)
{
    const std::time_t seconds = time;
    std::tm parts{};
    if (!isUnixTime || ::gmtime_r(&seconds, &parts) == nullptr)
        return std::to_string(time);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                       parts.tm_hour, parts.tm_min, parts.tm_sec);
}

} // namespace tool
