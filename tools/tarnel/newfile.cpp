#include "tools/tarnel/newfile.h"

#include "tools/tarnel/command.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include <cstdlib>
#include <unistd.h>

namespace tool {

NewFile::NewFile(const std::filesystem::path &path) : m_path(path), m_part(path.native() + ".XXXXXX")
{
    const int descriptor = ::mkstemp(m_part.data());
    if (descriptor < 0)
        fail();
    ::close(descriptor);
}

NewFile::~NewFile()
{
    if (!m_part.empty())
        ::unlink(m_part.c_str());
}

void NewFile::finish()
{
    if (::rename(m_part.c_str(), m_path.c_str()) != 0)
        fail();
    m_part.clear();
}

void NewFile::fail() const
{
    const std::string reason = std::generic_category().message(errno);
    throw Obstacle(fmt::format("{} cannot be written: {}", m_path.string(), reason),
                   "name a file that you may write with -o");
}

} // namespace tool
