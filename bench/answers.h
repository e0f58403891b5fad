#pragma once

#include <tarnel/tarnel.h>

#include <cstdint>
#include <vector>

namespace bench {

namespace api = tarnelLib::api;

/// What calls have handed out: kept while the clock runs, and compared and released when it has stopped.
class Answers
{
public:
    Answers() = default;
    Answers(const Answers &) = delete;
    Answers &operator=(const Answers &) = delete;
    ~Answers();

    void keep(api::Event *events, unsigned int count) { m_events.push_back({events, count}); }
    void keep(api::Device *devices, unsigned int count) { m_devices.push_back({devices, count}); }
    void keep(api::User *users, unsigned int count) { m_users.push_back({users, count}); }
    void keep(api::Site *sites, unsigned int count) { m_sites.push_back({sites, count}); }

    /// How many records there are.
    [[nodiscard]] std::size_t count() const;
    /// A number that follows from every member of every record, in their order.
    [[nodiscard]] std::uint64_t digest() const;

private:
    /// A `malloc`'d block of structures.
    template <class Api>
    struct Block {
        Api *first;
        unsigned int count;
    };

    std::vector<Block<api::Event>> m_events;
    std::vector<Block<api::Device>> m_devices;
    std::vector<Block<api::User>> m_users;
    std::vector<Block<api::Site>> m_sites;
};

} // namespace bench
