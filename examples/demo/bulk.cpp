#include "demo/cache.h"
#include "demo/chapters.h"
#include "demo/stopwatch.h"
#include "demo/table.h"

#include <cstdlib>
#include <map>

namespace demo {

namespace {

constexpr unsigned int recordsPerRequest = 100;
constexpr unsigned int eventsPerRequest = 1000;

/// Sends all records of a kind, as a server would at the start of a session, and tells how that went in a row.
template <class Record, class Add>
void feed(Table &table, const generator::Centre &centre, const std::string &function, unsigned int perRequest,
          Add &&add)
{
    const Stopwatch stopwatch;
    unsigned int requests = 0;
    centre.forEachAddRequest<Record>(perRequest, [&](const std::u16string &request) {
        expect(add(units(request), length(request)), function);
        ++requests;
    });
    table.add({function, std::to_string(centre.count<Record>()), std::to_string(requests), stopwatch.milliseconds()});
}

unsigned int addEventsOfServer(const unsigned short *text, unsigned int textLength)
{
    Events events;
    return addEvents(events.out(), events.count(), text, textLength);
}

/// What a domain's line at a glance says.
struct DomainSummary {
    std::string name;
    std::string locale;
    unsigned int operators = 0;
    unsigned int sites = 0;
    unsigned int devices = 0;
    unsigned int zones = 0;
};

unsigned int zoneCount(const api::Device &device)
{
    unsigned int zones = 0;
    for (const api::Section *section = device.sections; section != device.sections + device.sectionsCount; ++section)
        zones += section->zonesCount;
    return zones;
}

} // namespace

void fillCache(const generator::Centre &centre)
{
    chapter("Feeding it");
    say("Records go in as JSON texts in UTF-16, just as a server might send them. One call is one transaction: when it "
        "has returned 0, its records are on the disk. The request that brings the first two domains is");
    show({utf8(addRequest(centre.make<generator::Domain>(0, 2)))});
    say("The whole centre follows. Sites bring their devices with them, those their sections, and those their zones:");

    Table table({"call", "records", "calls", "time, with making the texts"});
    feed<generator::Locale>(table, centre, "addLocales", recordsPerRequest, addLocales);
    feed<generator::Domain>(table, centre, "addDomains", recordsPerRequest, addDomains);
    feed<generator::User>(table, centre, "addUsers", recordsPerRequest, addUsers);
    feed<generator::Organization>(table, centre, "addOrganizations", recordsPerRequest, addOrganizations);
    feed<generator::Contractor>(table, centre, "addContractors", recordsPerRequest, addContractors);
    feed<generator::Contract>(table, centre, "addContracts", recordsPerRequest, addContracts);
    feed<generator::Site>(table, centre, "addSites", recordsPerRequest, addSites);
    feed<generator::Event>(table, centre, "addEvents", eventsPerRequest, addEventsOfServer);
    table.print();

    const std::u16string server = u"server.example.org:7700";
    expect(setServerIp(units(server), length(server)), "setServerIp");
    say("One setting is kept as well, where the server is: setServerIp with " + utf8(server) + ".");
}

void showCentre(const generator::Centre &centre)
{
    chapter("The centre at a glance");
    say("What comes out are plain C structures, put together from all the tables that a record touches: a user names "
        "its domain by a number, and is read back with that domain, and the domain's locale, inside.");
    Domains domains;
    Users users;
    Sites sites;
    Devices devices;
    const Stopwatch stopwatch;
    expect(getDomains(domains.out(), domains.count()), "getDomains");
    expect(getUsers(users.out(), users.count()), "getUsers");
    expect(getSites(sites.out(), sites.count()), "getSites");
    expect(getDevices(devices.out(), devices.count()), "getDevices");
    const std::string passed = stopwatch.milliseconds();

    std::map<unsigned int, DomainSummary> summaries;
    summaries[0] = {.name = "(no domain)", .locale = "–"};
    for (const api::Domain &domain : domains) {
        summaries[domain.id].name = utf8(domain.name);
        summaries[domain.id].locale = domain.locale == nullptr ? "–" : utf8(domain.locale->description);
    }
    const auto summaryOf = [&](const unsigned int *domain) -> DomainSummary & {
        return summaries[domain == nullptr ? 0 : *domain];
    };
    for (const api::User &user : users)
        ++summaryOf(user.domainId).operators;
    for (const api::Site &site : sites)
        ++summaryOf(site.domainId).sites;
    for (const api::Device &device : devices) {
        ++summaryOf(device.domainId).devices;
        summaryOf(device.domainId).zones += zoneCount(device);
    }
    Table table({"domain", "locale", "operators", "sites", "devices", "zones"});
    for (const auto &[id, summary] : summaries)
        table.add({summary.name, summary.locale, std::to_string(summary.operators), std::to_string(summary.sites),
                   std::to_string(summary.devices), std::to_string(summary.zones)});
    table.print();
    say("All of " + std::to_string(users.size()) + " users, " + std::to_string(sites.size()) + " sites and " +
        std::to_string(devices.size()) + " devices with their sections, zones and users were read in " + passed + ".");
    if (sites.size() != centre.count<generator::Site>() || devices.size() != centre.count<generator::Device>())
        throw std::runtime_error("sites or devices were lost");
}

} // namespace demo
