#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

/// One line on the terminal that says how far something is; nothing where there is none, or in the first second.
class Progress
{
public:
    Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress();

    /// Says what is being done.
    void show(const std::string &text);
    /// The same with a bar: `done` of `all`.
    void show(const std::string &text, std::uint64_t done, std::uint64_t all);

private:
    using Clock = std::chrono::steady_clock;

    bool m_isOnTerminal;
    Clock::time_point m_next;
    bool m_isShown = false;
};

} // namespace tool
