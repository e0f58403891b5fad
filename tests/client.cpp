#include "client.h"

#include <unistd.h>

#include <chrono>
#include <codecvt>
#include <locale>
#include <stdexcept>

namespace client {

namespace fs = std::filesystem;

namespace {

using Converter = std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t>;

} // namespace

Text::Text(std::string_view utf8) : m_units(Converter().from_bytes(utf8.data(), utf8.data() + utf8.size())) {}

std::string utf8(const unsigned short *text)
{
    // The first argument is what a text that is not Unicode is turned into.
    return text == nullptr ? "(null)"
                           : Converter("(not Unicode)", u"").to_bytes(reinterpret_cast<const char16_t *>(text));
}

bool waitUntil(const std::function<bool()> &condition)
{
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(200us);
    }
    return true;
}

TemporaryDirectory::TemporaryDirectory() : m_former(fs::current_path())
{
    std::string name = (fs::temp_directory_path() / "tarnel-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary directory");
    m_path = name;
    fs::current_path(m_path);
}

TemporaryDirectory::~TemporaryDirectory()
{
    fs::current_path(m_former);
    fs::remove_all(m_path);
}

RunningCache::RunningCache() : m_thread(launchCache)
{
    if (waitUntil([] { return getState() == TARNEL_STATE_RUNNING; }))
        return;
    exitCache();
    m_thread.join();
    throw std::runtime_error("the cache does not start");
}

RunningCache::~RunningCache()
{
    exitCache();
    m_thread.join();
}

} // namespace client
