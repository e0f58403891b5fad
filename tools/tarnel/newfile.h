#pragma once

#include <filesystem>
#include <string>

namespace tool {

/// A file that is made under another name, takes its own when it is whole, and is gone if it does not come to that.
/// Nobody but its owner can read it: a cache has names and phone numbers in it.
class NewFile
{
public:
    explicit NewFile(const std::filesystem::path &path);
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;
    ~NewFile();

    /// Where it is meanwhile.
    [[nodiscard]] const std::string &path() const { return m_part; }

    /// Gives it its name; what was there is replaced.
    void finish();

private:
    [[noreturn]] void fail() const;

    std::filesystem::path m_path;
    std::string m_part;
};

} // namespace tool
