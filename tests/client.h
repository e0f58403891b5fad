#pragma once

#include <tarnel/tarnel.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

/// A client of the library, as the tests need one: everything goes through the public header.
namespace client {

namespace api = tarnelLib::api;

/// A text as the library takes it: pointer and length. Made from UTF-8.
class Text
{
public:
    Text(std::string_view utf8);
    Text(const char *utf8) : Text(std::string_view(utf8)) {}
    Text(const std::string &utf8) : Text(std::string_view(utf8)) {}
    explicit Text(std::u16string units) : m_units(std::move(units)) {}

    [[nodiscard]] const unsigned short *units() const
    {
        return reinterpret_cast<const unsigned short *>(m_units.data());
    }
    [[nodiscard]] unsigned int length() const { return static_cast<unsigned int>(m_units.size()); }

private:
    std::u16string m_units;
};

/// A text that the library handed out, as UTF-8; "(null)" for a null pointer, "(not Unicode)" for a lone surrogate.
std::string utf8(const unsigned short *text);

/// Waits until `condition` holds; false if that takes longer than ten seconds.
bool waitUntil(const std::function<bool()> &condition);

/// An empty directory that is the current one for as long as the object lives.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    ~TemporaryDirectory();

private:
    std::filesystem::path m_former;
    std::filesystem::path m_path;
};

/// A cache that runs on a thread of its own, in the current directory.
class RunningCache
{
public:
    /// Returns when the cache is running.
    RunningCache();
    RunningCache(const RunningCache &) = delete;
    RunningCache &operator=(const RunningCache &) = delete;
    /// Exits the cache and waits for the launch to end.
    ~RunningCache();

private:
    std::thread m_thread;
};

/// Releases what the library hands out, with the free function of its kind.
template <auto Free>
struct Releaser {
    template <class Api>
    void operator()(Api *structure) const
    {
        Free(structure);
    }
};
using LocalePointer = std::unique_ptr<api::Locale, Releaser<freeLocale>>;
using DomainPointer = std::unique_ptr<api::Domain, Releaser<freeDomain>>;
using UserPointer = std::unique_ptr<api::User, Releaser<freeUser>>;

} // namespace client
