#include "tools/tarnel/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::chrono::seconds beforeFirst(1);
constexpr std::chrono::milliseconds betweenLines(100);
constexpr const char *clearLine = "\r\x1b[K";

} // namespace

Progress::Progress() : m_isOnTerminal(::isatty(STDERR_FILENO) == 1), m_next(Clock::now() + beforeFirst) {}

Progress::~Progress()
{
    if (m_isShown)
        static_cast<void>(std::fputs(clearLine, stderr));
}

void Progress::show(const std::string &text)
{
    if (!m_isOnTerminal || Clock::now() < m_next)
        return;
    static_cast<void>(std::fputs(fmt::format("{}{}", clearLine, text).c_str(), stderr));
    m_isShown = true;
    m_next = Clock::now() + betweenLines;
}

void Progress::show(const std::string &text, std::uint64_t done, std::uint64_t all)
{
    constexpr std::uint64_t width = 30;
    const std::uint64_t filled = all == 0 ? width : std::min(done, all) * width / all;
    show(fmt::format("{:#>{}}{:->{}} {:3}%  {}", "", filled, "", width - filled, filled * 100 / width, text));
}

} // namespace tool
