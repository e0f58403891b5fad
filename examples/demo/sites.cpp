#include "demo/cache.h"
#include "demo/chapters.h"
#include "demo/stopwatch.h"
#include "demo/table.h"

namespace demo {

namespace {

/// A site with three devices.
constexpr std::uint32_t siteShown = 5;

template <class Api>
std::string nameOf(const Api *structure)
{
    return structure == nullptr ? "–" : utf8(structure->name);
}

std::string coordinates(const api::Location *location)
{
    if (location == nullptr || location->latitude == nullptr || location->longitude == nullptr)
        return "–";
    return std::to_string(*location->latitude) + "°, " + std::to_string(*location->longitude) + "°";
}

std::vector<std::string> siteLines(const api::Site &site)
{
    const api::Contract *contract = site.contract;
    const api::User *user = contract == nullptr ? nullptr : contract->user;
    std::vector<std::string> lines = {
        "Site " + std::to_string(site.id) + ": " + utf8(site.name),
        "├─ address     " + utf8(site.address),
        "├─ comment     " + utf8(site.comment),
        "├─ location    " + coordinates(site.location),
        "├─ domain      " + nameOf(site.domain),
    };
    if (contract == nullptr) {
        lines.emplace_back("├─ contract    –");
    } else {
        lines.push_back("├─ contract    " + utf8(contract->number) + ", status " + number(contract->status));
        lines.push_back("│  ├─ contractor  " + nameOf(contract->contractor));
        lines.push_back("│  └─ operator    " + nameOf(user) + ", of domain " +
                        (user == nullptr ? "–" : nameOf(user->domain)));
    }
    return lines;
}

std::string sectionList(const api::DeviceUser &user)
{
    std::string list;
    for (const unsigned int *section = user.sections; section != user.sections + user.sectionsCount; ++section)
        list.append(list.empty() ? "" : ", ").append(std::to_string(*section));
    return list.empty() ? "none" : list;
}

void addDeviceLines(std::vector<std::string> &lines, const api::Device &device, bool isLast)
{
    const std::string below = isLast ? "   " : "│  ";
    lines.push_back((isLast ? "└─ " : "├─ ") + ("Device " + std::to_string(device.id)) + ": account " +
                    number(device.account) + ", configuration " + number(device.configVersion));
    for (unsigned int i = 0; i < device.sectionsCount; ++i) {
        const api::Section &section = device.sections[i];
        lines.push_back(below + "├─ section " + std::to_string(section.id) + ": " + utf8(section.name));
        for (unsigned int j = 0; j < section.zonesCount; ++j) {
            const api::Zone &zone = section.zones[j];
            lines.push_back(below + (j + 1 == section.zonesCount ? "│  └─ " : "│  ├─ ") + "zone " +
                            std::to_string(zone.id) + ": " + utf8(zone.name));
        }
    }
    for (unsigned int i = 0; i < device.deviceUsersCount; ++i) {
        const api::DeviceUser &user = device.deviceUsers[i];
        lines.push_back(below + (i + 1 == device.deviceUsersCount ? "└─ " : "├─ ") + "user " + std::to_string(user.id) +
                        ": " + utf8(user.name) + ", " + utf8(user.phone) + ", may arm sections " + sectionList(user));
    }
}

} // namespace

void showSite()
{
    chapter("One site with all that is there");
    say("This is what an operator needs when the place reports something: getSite brings the site with its contract, "
        "contractor, operator and domains, and getDevice each device with its tree. Which devices stand at a site is "
        "the client's to remember. A dash is a field that the server did not send: absent stays absent, it never turns "
        "into 0 or an empty text.");
    const Stopwatch stopwatch;
    Site site;
    expect(getSite(site.out(), generator::Site::firstId + siteShown), "getSite");
    std::vector<std::string> lines = siteLines(*site);
    const std::uint32_t devices = generator::Centre::deviceCountOfSite(siteShown);
    for (std::uint32_t i = 0; i < devices; ++i) {
        Device device;
        expect(
            getDevice(device.out(), generator::Device::firstId + generator::Centre::firstDeviceOfSite(siteShown) + i),
            "getDevice");
        addDeviceLines(lines, *device, i + 1 == devices);
    }
    const std::string passed = stopwatch.milliseconds();
    show(lines);
    say("Reading and writing this out took " + passed + ".");
}

} // namespace demo
