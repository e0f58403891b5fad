#include "bench/contents.h"

namespace bench {

namespace {

using generator::Centre;

constexpr std::uint64_t seed = 1;
constexpr std::uint32_t sitesOfThousandDevices = 667;
constexpr std::uint32_t eventsPerFill = 50000;

void require(unsigned int code)
{
    if (code != TARNEL_SUCCESS)
        throw std::runtime_error("a file cannot be filled");
}

template <class Record>
void fill(const Centre &centre, unsigned int (*add)(const unsigned short *, unsigned int))
{
    centre.forEachAddRequest<Record>(1000, [&](const std::u16string &request) {
        require(
            add(reinterpret_cast<const unsigned short *>(request.data()), static_cast<unsigned int>(request.size())));
    });
}

void fillWithPeople(const Centre &centre)
{
    fill<generator::Locale>(centre, ::addLocales);
    fill<generator::Domain>(centre, ::addDomains);
    fill<generator::User>(centre, ::addUsers);
}

/// One event in a thousand carries the affect flag, and every event says whether it does.
std::vector<generator::Event> eventsWithFewAffects(const Centre &centre, std::uint32_t first, std::uint32_t count)
{
    std::vector<generator::Event> events = centre.make<generator::Event>(first, count);
    for (generator::Event &event : events)
        event.affect = event.id % eventsPerAffect == 0;
    return events;
}

/// Makes a list just so long, of the parts that it has.
template <class Part>
void fit(std::vector<Part> &parts, std::size_t size)
{
    for (std::size_t i = 0; parts.size() < size; ++i)
        parts.push_back(parts[i]);
    parts.resize(size);
}

/// A site with one device of 4 sections of 4 zones and 5 users with 2 sections each, and a location.
generator::Site regularSite(const Centre &centre, std::uint32_t index)
{
    generator::Site site = centre.make<generator::Site>(index);
    site.devices.resize(1);
    generator::Device &device = site.devices.front();
    fit(device.sections, 4);
    for (std::uint32_t i = 0; i < 4; ++i) {
        generator::Section &section = device.sections[i];
        section.id = i + 1;
        fit(section.zones, 4);
        for (std::uint32_t j = 0; j < 4; ++j)
            section.zones[j].id = i * 4 + j + 1;
    }
    fit(device.deviceUsers, 5);
    for (std::uint32_t i = 0; i < 5; ++i) {
        device.deviceUsers[i].userIndex = i + 1;
        device.deviceUsers[i].sections = {i % 3 + 1, i % 3 + 2};
    }
    if (!site.location)
        site.location = generator::Location{0.25 * (index % 360), -0.125 * (index % 720)};
    return site;
}

void fillWithSurroundings(const Centre &centre)
{
    fillWithPeople(centre);
    fill<generator::Contractor>(centre, ::addContractors);
    fill<generator::Contract>(centre, ::addContracts);
}

} // namespace

std::string withCommas(std::uint32_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t position = text.size(); position > 3; position -= 3)
        text.insert(position - 3, 1, ',');
    return text;
}

Centre historyOf(std::uint32_t events)
{
    return Centre(seed, {.sites = sitesOfThousandDevices, .events = events});
}

Centre sitesOf(std::uint32_t sites, std::uint32_t events)
{
    return Centre(seed, {.sites = sites, .events = events});
}

Fixture historyFixture(const std::string &name, const Centre &centre, std::uint32_t events)
{
    return {name, [=](Side &side) {
                fillWithPeople(centre);
                fill<generator::Device>(centre, ::addDevices);
                for (std::uint32_t first = 0; first < events; first += eventsPerFill) {
                    Answers answers;
                    side.addEvents(generator::addRequest(
                                       eventsWithFewAffects(centre, first, std::min(eventsPerFill, events - first))),
                                   answers);
                }
            }};
}

Fixture historyFixture(std::uint32_t events)
{
    return historyFixture("events-" + std::to_string(events), historyOf(events), events);
}

std::u16string regularSitesRequest(const Centre &centre)
{
    std::vector<generator::Site> sites;
    for (std::uint32_t i = 0; i < centre.count<generator::Site>(); ++i)
        sites.push_back(regularSite(centre, i));
    return generator::addRequest(sites);
}

std::u16string siteEventsRequest(const Centre &centre, std::uint32_t first, std::uint32_t count)
{
    std::vector<generator::Event> events = centre.make<generator::Event>(first, count);
    for (generator::Event &event : events) {
        const std::uint32_t device = Centre::firstDeviceOfSite(event.id % centre.count<generator::Site>());
        event.deviceId = static_cast<std::int32_t>(generator::Device::firstId + device);
    }
    return generator::addRequest(events);
}

Fixture surroundingsFixture(const Centre &centre)
{
    return {"no-sites", [=](Side &) { fillWithSurroundings(centre); }};
}

Fixture sitesFixture(const Centre &centre)
{
    return {"sites", [=](Side &side) {
                fillWithSurroundings(centre);
                side.addSites(regularSitesRequest(centre));
            }};
}

Fixture sitesAndEventsFixture(const Centre &centre)
{
    return {"sites-and-events", [=](Side &side) {
                fillWithSurroundings(centre);
                side.addSites(regularSitesRequest(centre));
                const auto events = centre.count<generator::Event>();
                for (std::uint32_t first = 0; first < events; first += eventsPerFill) {
                    Answers answers;
                    side.addEvents(siteEventsRequest(centre, first, std::min(eventsPerFill, events - first)), answers);
                }
            }};
}

} // namespace bench
