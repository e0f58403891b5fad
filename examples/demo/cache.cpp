#include "demo/cache.h"

#include <cstdlib>

namespace demo {

namespace fs = std::filesystem;

void expect(unsigned int code, const std::string &function, unsigned int expected)
{
    if (code != expected)
        throw CallFailed(function, code);
}

TemporaryDirectory::TemporaryDirectory() : m_former(fs::current_path())
{
    std::string name = (fs::temp_directory_path() / "tarnel-demo-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary directory can be made");
    m_path = name;
    fs::current_path(m_path);
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    fs::current_path(m_former, ignored);
    fs::remove_all(m_path, ignored);
}

RunningCache::RunningCache() : m_thread(launchCache)
{
    while (getState() != TARNEL_STATE_RUNNING)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

RunningCache::~RunningCache()
{
    exitCache();
    m_thread.join();
}

} // namespace demo
