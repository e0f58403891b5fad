#pragma once

#include "generator/json.h"
#include "generator/random.h"

#include <algorithm>

namespace generator {

struct Language;

/// How much there is. What is not named here follows from the number of sites.
struct Scale {
    std::uint32_t sites = 200;
    std::uint32_t events = 12000; ///< Spread over `Centre::historySeconds`.
};

/// All that a monitoring centre's server knows, made up from a seed.
///
/// Nothing is stored: each record follows from the seed, its kind and its index alone, so that any of them can be had
/// in any order, twice, and at any scale, on any machine and with any compiler. `count<Record>()` says how many there
/// are and `make<Record>(index)` gives one, for Locale, Domain, User, Organization, Contractor, Contract, Device, Site
/// and Event. The identifier of the record of an index is `Record::firstId + index`.
///
/// References between the records hold, with a few exceptions that a real centre has as well: about one site in 40 has
/// no domain and one in 12 no contract, one contract in 15 no operator, and every 97th event comes from a device that
/// nobody knows. Every 41st event carries the affect flag; every 61st does not say whether it does.
class Centre
{
public:
    /// The first event happens at this time: 1 March 2026, 00:00 UTC, in seconds since 1970.
    static constexpr std::uint32_t historyStart = 1772323200;
    /// The events of the scale fill this time: 30 days.
    static constexpr std::uint32_t historySeconds = 30 * 86400;

    explicit Centre(std::uint64_t seed = 1, Scale scale = {}) : m_seed(seed), m_scale(scale) {}

    template <class Record>
    [[nodiscard]] std::uint32_t count() const;

    /// A record whole: a site with its devices, a device with its sections, zones and users. Events go on beyond their
    /// number, after the month; the times of events never decrease with the index.
    template <class Record>
    [[nodiscard]] Record make(std::uint32_t index) const;

    template <class Record>
    [[nodiscard]] std::vector<Record> make(std::uint32_t first, std::uint32_t size) const
    {
        std::vector<Record> records;
        records.reserve(size);
        for (std::uint32_t i = 0; i < size; ++i)
            records.push_back(make<Record>(first + i));
        return records;
    }

    /// What a server sends when a record has changed: its identifier and a few fields. Each round changes it otherwise.
    /// For Domain, User, Organization, Contractor, Contract and Site.
    template <class Record>
    [[nodiscard]] Record makeChange(std::uint32_t index, std::uint32_t round) const;

    /// Calls `send` with each "add" request that it takes to send all records of a kind, of `batchSize` records each.
    /// The text is only made for the call.
    template <class Record, class Send>
    void forEachAddRequest(std::uint32_t batchSize, Send &&send) const
    {
        for (std::uint32_t first = 0; first < count<Record>(); first += batchSize)
            send(addRequest(make<Record>(first, std::min(batchSize, count<Record>() - first))));
    }

    /// The index of a site's first device, and how many it has: from one to three.
    [[nodiscard]] static std::uint32_t firstDeviceOfSite(std::uint32_t site);
    [[nodiscard]] static std::uint32_t deviceCountOfSite(std::uint32_t site);
    [[nodiscard]] static std::uint32_t siteOfDevice(std::uint32_t device);

private:
    /// Of what a device consists. The zones are numbered through all its sections.
    struct DeviceShape {
        std::uint32_t sections;
        std::uint32_t zonesPerSection;
    };

    template <class Record>
    [[nodiscard]] Random random(std::uint32_t index, std::uint64_t purpose = 0) const
    {
        return Random{m_seed, Record::firstId, index, purpose};
    }

    [[nodiscard]] std::uint32_t domainOfSite(std::uint32_t site) const;
    [[nodiscard]] std::uint32_t operatorOfDomain(std::uint32_t domain, Random &random) const;
    [[nodiscard]] std::uint32_t contractOfDomain(std::uint32_t domain, Random &random) const;
    [[nodiscard]] const Language &languageOfDomain(std::uint32_t domain) const;
    [[nodiscard]] DeviceShape shapeOfDevice(std::uint32_t device) const;
    [[nodiscard]] std::uint32_t timeOfEvent(std::uint32_t index) const;
    [[nodiscard]] std::u16string firmName(std::uint32_t index) const;
    [[nodiscard]] Section makeSection(std::uint32_t device, std::uint32_t section) const;
    [[nodiscard]] Zone makeZone(std::uint32_t device, std::uint32_t zone) const;
    [[nodiscard]] DeviceUser makeDeviceUser(std::uint32_t device, std::uint32_t user) const;

    std::uint64_t m_seed;
    Scale m_scale;
};

// clang-format off
template <> std::uint32_t Centre::count<Locale>() const;
template <> std::uint32_t Centre::count<Domain>() const;
template <> std::uint32_t Centre::count<User>() const;
template <> std::uint32_t Centre::count<Organization>() const;
template <> std::uint32_t Centre::count<Contractor>() const;
template <> std::uint32_t Centre::count<Contract>() const;
template <> std::uint32_t Centre::count<Device>() const;
template <> std::uint32_t Centre::count<Site>() const;
template <> std::uint32_t Centre::count<Event>() const;

template <> Locale Centre::make(std::uint32_t index) const;
template <> Domain Centre::make(std::uint32_t index) const;
template <> User Centre::make(std::uint32_t index) const;
template <> Organization Centre::make(std::uint32_t index) const;
template <> Contractor Centre::make(std::uint32_t index) const;
template <> Contract Centre::make(std::uint32_t index) const;
template <> Device Centre::make(std::uint32_t index) const;
template <> Site Centre::make(std::uint32_t index) const;
template <> Event Centre::make(std::uint32_t index) const;

template <> Domain Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
template <> User Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
template <> Organization Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
template <> Contractor Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
template <> Contract Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
template <> Site Centre::makeChange(std::uint32_t index, std::uint32_t round) const;
// clang-format on

} // namespace generator
