#pragma once

#include <tarnel/tarnel.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

/// How a C++ client can wrap the library's plain C: what must be released is released, and a code that is not success
/// becomes an exception.
namespace demo {

namespace api = tarnelLib::api;

/// A call that was expected to succeed and did not.
class CallFailed : public std::runtime_error
{
public:
    CallFailed(const std::string &function, unsigned int code)
        : std::runtime_error(function + " returned " + std::to_string(code))
    {
    }
};

void expect(unsigned int code, const std::string &function, unsigned int expected = TARNEL_SUCCESS);

/// A new directory that is the current one for as long as the object lives, and then removed.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    ~TemporaryDirectory();

    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_former;
    std::filesystem::path m_path;
};

/// The cache, running on a thread of its own in the current directory.
class RunningCache
{
public:
    /// Returns when the state is "running".
    RunningCache();
    RunningCache(const RunningCache &) = delete;
    RunningCache &operator=(const RunningCache &) = delete;
    ~RunningCache();

private:
    std::thread m_thread;
};

/// The two arguments that the library takes for a text.
inline const unsigned short *units(const std::u16string &text)
{
    return reinterpret_cast<const unsigned short *>(text.data());
}
inline unsigned int length(const std::u16string &text)
{
    return static_cast<unsigned int>(text.size());
}

/// A structure that the library handed out.
template <class Api, auto Free>
class Item
{
public:
    Item() = default;
    Item(const Item &) = delete;
    Item &operator=(const Item &) = delete;
    ~Item() { Free(m_structure); }

    /// Where a function puts its result; what was there is released.
    Api **out()
    {
        Free(std::exchange(m_structure, nullptr));
        return &m_structure;
    }
    const Api *operator->() const { return m_structure; }
    const Api &operator*() const { return *m_structure; }

private:
    Api *m_structure = nullptr;
};

/// A block of structures that the library handed out, with its count.
template <class Api, auto FreeArray>
class List
{
public:
    List() = default;
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() { FreeArray(m_structures, m_count); }

    Api **out()
    {
        FreeArray(std::exchange(m_structures, nullptr), std::exchange(m_count, 0));
        return &m_structures;
    }
    unsigned int *count() { return &m_count; }

    [[nodiscard]] unsigned int size() const { return m_count; }
    [[nodiscard]] const Api *begin() const { return m_structures; }
    [[nodiscard]] const Api *end() const { return m_structures + m_count; }

private:
    Api *m_structures = nullptr;
    unsigned int m_count = 0;
};

using Domains = List<api::Domain, freeDomainsArray>;
using User = Item<api::User, freeUser>;
using Users = List<api::User, freeUsersArray>;
using Device = Item<api::Device, freeDevice>;
using Devices = List<api::Device, freeDevicesArray>;
using Sections = List<api::Section, freeSectionsArray>;
using Zone = Item<api::Zone, freeZone>;
using Site = Item<api::Site, freeSite>;
using Sites = List<api::Site, freeSitesArray>;
using Event = Item<api::Event, freeEvent>;
using Events = List<api::Event, freeEventsArray>;

} // namespace demo
