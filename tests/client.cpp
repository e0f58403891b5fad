#include "client.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <codecvt>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <locale>
#include <sstream>

namespace client {

namespace fs = std::filesystem;

using Converter = std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t>;

Argument::Argument(const std::string &utf8) : m_units(Converter().from_bytes(utf8)) {}

std::string utf8(const unsigned short *text)
{
    // The first argument is what a text that is not Unicode is turned into.
    return Converter("(not Unicode)", u"").to_bytes(reinterpret_cast<const char16_t *>(text));
}

bool waitUntil(const std::function<bool()> &condition)
{
    for (int wait = 0; wait < 40000 && !condition(); ++wait)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    return condition();
}

TemporaryDirectory::TemporaryDirectory()
{
    std::string name = (fs::temp_directory_path() / "tarnel-XXXXXX").string();
    EXPECT_NE(::mkdtemp(name.data()), nullptr);
    m_path = name;
    fs::current_path(m_path);
}

TemporaryDirectory::~TemporaryDirectory()
{
    fs::current_path(m_former);
    fs::remove_all(m_path);
}

RunningCache::RunningCache()
{
    EXPECT_TRUE(waitUntil([] { return getState() == TARNEL_STATE_RUNNING; })) << "the cache does not start";
}

Busy::Busy(int threads, const std::function<void()> &work)
{
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this, work] {
            while (!m_isOver)
                work();
        });
}

unsigned int setting(const char *name, unsigned int otherwise)
{
    const char *value = std::getenv(name);
    return value != nullptr ? static_cast<unsigned int>(std::atoi(value)) : otherwise;
}

void printTried(const std::string &what, std::uintmax_t times)
{
    std::cout << "tried: " << what << ": " << times << std::endl;
}

std::string readData(const std::string &name)
{
    std::ifstream file(TARNEL_DATA + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Case> readCases(const std::string &name)
{
    std::vector<Case> cases;
    std::istringstream lines(readData(name));
    for (std::string line; std::getline(lines, line);) {
        line.erase(std::min(line.size(), line.find("   # ")));
        if (line.starts_with('['))
            cases.push_back({line.substr(1, line.size() - 2), {}});
        else if (!line.empty() && !line.starts_with('#'))
            cases.back().lines.push_back(line);
    }
    return cases;
}

void PrintTo(const Case &shown, std::ostream *stream)
{
    *stream << shown.name;
}

} // namespace client
