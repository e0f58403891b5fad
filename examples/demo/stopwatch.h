#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace demo {

/// How long something takes, for people.
class Stopwatch
{
public:
    [[nodiscard]] std::string milliseconds() const
    {
        const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - m_start;
        char text[32];
        std::snprintf(text, sizeof text, "%.1f ms", passed.count());
        return text;
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace demo
