#pragma once

#include <array>
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
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.1f ms", passed.count());
        return text.data();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace demo
