#include "bench/baseline/baseline.h"
#include "bench/baseline/release.h"
#include "bench/baseline/rows.h"

#include <array>
#include <unordered_map>

/// The calls for sites and for devices with all that is programmed into them.
namespace bench {

namespace {

namespace ondemand = simdjson::ondemand;

constexpr std::array siteMembers = std::to_array<Member>({{"id", 1},
                                                          {"name", 2},
                                                          {"comment", 3},
                                                          {"extra", 4},
                                                          {"is_crossing", 5},
                                                          {"address_text", 7},
                                                          {"contract_status", 9},
                                                          {"type", 10},
                                                          {"category", 11},
                                                          {"arm_mode", 12},
                                                          {"delegated", 13},
                                                          {"devices", nested},
                                                          {"domain", 6},
                                                          {"location", nested},
                                                          {"contract_id", 8},
                                                          {"site_plan", 14}});

constexpr std::array deviceMembers = std::to_array<Member>({{"id", 1},
                                                            {"account", 2},
                                                            {"config_version", 4},
                                                            {"sections", nested},
                                                            {"users", nested},
                                                            {"parted", 5},
                                                            {"cluster_id", 6},
                                                            {"domain", 3}});

// The position after the identifier's belongs to the device's.
constexpr std::array sectionMembers = std::to_array<Member>({{"id", 1},
                                                             {"name", 3},
                                                             {"schedule_id", 4},
                                                             {"zones", nested},
                                                             {"tracert", 5},
                                                             {"flags", 6},
                                                             {"detector", 7},
                                                             {"arm", 8},
                                                             {"physic", 9},
                                                             {"form", 10},
                                                             {"delay", 11},
                                                             {"uid_type", 12}});

constexpr std::array zoneMembers = std::to_array<Member>({{"id", 1},
                                                          {"name", 4},
                                                          {"detector", 5},
                                                          {"physic", 6},
                                                          {"form", 7},
                                                          {"flags", 8},
                                                          {"delay", 9},
                                                          {"schedule_id", 10},
                                                          {"tracert", 11},
                                                          {"uid_type", 12},
                                                          {"arm", 13}});

constexpr std::array deviceUserMembers =
    std::to_array<Member>({{"user_index", 1}, {"name", 3}, {"comment", 4}, {"phone", 5}, {"sections", nested}});

/// The identifier of an object, which its nested parts need before the object has been read.
sqlite3_int64 idOf(ondemand::object &object, std::string_view key)
{
    const sqlite3_int64 id = object.find_field_unordered(key).get_int64();
    object.reset().value();
    return id;
}

template <class Part>
Part *find(Part *parts, unsigned int count, unsigned int id)
{
    for (unsigned int i = 0; i < count; ++i) {
        if (parts[i].id == id)
            return parts + i;
    }
    return nullptr;
}

/// The statements that read the parts of devices.
struct PartReads {
    Statement &sections;
    Statement &zones;
    Statement &deviceUsers;
    Statement &links;
};

/// Reads parts into their devices. `deviceOf` gives the device of an identifier, or null.
template <class DeviceOf>
void readParts(PartReads reads, DeviceOf deviceOf)
{
    const auto ownerOf = [&](sqlite3_stmt *row) -> api::Device * { return deviceOf(rows::identifier(row, 0)); };
    reads.sections.forEachRow([&](sqlite3_stmt *row) {
        if (api::Device *device = ownerOf(row))
            rows::readSection(row, rows::append(device->sections, device->sectionsCount));
    });
    reads.zones.forEachRow([&](sqlite3_stmt *row) {
        api::Device *device = ownerOf(row);
        if (device == nullptr)
            return;
        if (api::Section *section = find(device->sections, device->sectionsCount, rows::identifier(row, 1)))
            rows::readZone(row, rows::append(section->zones, section->zonesCount));
    });
    reads.deviceUsers.forEachRow([&](sqlite3_stmt *row) {
        if (api::Device *device = ownerOf(row))
            rows::readDeviceUser(row, rows::append(device->deviceUsers, device->deviceUsersCount));
    });
    reads.links.forEachRow([&](sqlite3_stmt *row) {
        api::Device *device = ownerOf(row);
        if (device == nullptr)
            return;
        if (api::DeviceUser *user = find(device->deviceUsers, device->deviceUsersCount, rows::identifier(row, 1)))
            rows::append(user->sections, user->sectionsCount) = rows::identifier(row, 2);
    });
}

} // namespace

void Baseline::addSites(std::u16string_view request)
{
    m_begin.run();
    for (ondemand::object site : m_reader.items(request)) {
        const sqlite3_int64 id = idOf(site, "id");
        bindMembers(site, m_addSite, siteMembers, [&](std::string_view key, ondemand::value &value) {
            if (key == "location") {
                addLocation(value, id);
                return;
            }
            for (ondemand::object device : value.get_array())
                addDevice(device);
        });
        m_addSite.run();
    }
    m_commit.run();
}

void Baseline::addDevice(ondemand::object device)
{
    const sqlite3_int64 id = idOf(device, "id");
    bindMembers(device, m_addDevice, deviceMembers, [&](std::string_view key, ondemand::value &value) {
        for (ondemand::object part : value.get_array()) {
            if (key == "sections")
                addSection(part, id);
            else
                addDeviceUser(part, id);
        }
    });
    m_addDevice.run();
}

void Baseline::addSection(ondemand::object section, sqlite3_int64 device)
{
    const sqlite3_int64 id = idOf(section, "id");
    bindMembers(section, m_addSection, sectionMembers, [&](std::string_view, ondemand::value &value) {
        for (ondemand::object zone : value.get_array()) {
            bindMembers(zone, m_addZone, zoneMembers);
            m_addZone.bind(2, device);
            m_addZone.bind(3, id);
            m_addZone.run();
        }
    });
    m_addSection.bind(2, device);
    m_addSection.run();
}

void Baseline::addDeviceUser(ondemand::object user, sqlite3_int64 device)
{
    const sqlite3_int64 id = idOf(user, "user_index");
    bindMembers(user, m_addDeviceUser, deviceUserMembers, [&](std::string_view, ondemand::value &value) {
        m_addLink.bind(1, device);
        m_addLink.bind(2, id);
        for (auto section : value.get_array()) {
            m_addLink.bind(3, sqlite3_int64{section.get_int64()});
            m_addLink.run();
        }
    });
    m_addDeviceUser.bind(2, device);
    m_addDeviceUser.run();
}

void Baseline::addLocation(ondemand::object location, sqlite3_int64 site)
{
    m_addLocation.clearBindings();
    m_addLocation.bind(1, site);
    for (auto field : location) {
        const std::string_view key = field.unescaped_key();
        const double degrees = field.value().get_double();
        if (key == "lat")
            m_addLocation.bind(2, degrees);
        else if (key == "lon")
            m_addLocation.bind(3, degrees);
    }
    m_addLocation.run();
}

void Baseline::getSites(Answers &answers)
{
    api::Site *sites = nullptr;
    unsigned int count = 0;
    m_getSites.forEachRow([&](sqlite3_stmt *row) { rows::readSite(row, rows::append(sites, count)); });
    answers.take(sites, count, rows::release<api::Site>);
}

void Baseline::getSite(unsigned int id, Answers &answers)
{
    m_getSite.bind(1, sqlite3_int64{id});
    m_getSite.forEachRow([&](sqlite3_stmt *row) {
        auto *site = static_cast<api::Site *>(rows::allocate(sizeof(api::Site)));
        rows::readSite(row, *site);
        answers.take(site, 1, rows::release<api::Site>);
    });
}

void Baseline::getDevices(Answers &answers)
{
    api::Device *devices = nullptr;
    unsigned int count = 0;
    m_begin.run();
    m_getDevices.forEachRow([&](sqlite3_stmt *row) { rows::readDevice(row, rows::append(devices, count)); });
    std::unordered_map<unsigned int, api::Device *> index(count);
    for (unsigned int i = 0; i < count; ++i)
        index.emplace(devices[i].id, devices + i);
    readParts({m_getSections, m_getZones, m_getDeviceUsers, m_getLinks}, [&](unsigned int id) {
        const auto found = index.find(id);
        return found == index.end() ? nullptr : found->second;
    });
    m_commit.run();
    answers.take(devices, count, rows::release<api::Device>);
}

void Baseline::getDevice(unsigned int id, Answers &answers)
{
    api::Device *device = nullptr;
    m_begin.run();
    m_getDevice.bind(1, sqlite3_int64{id});
    m_getDevice.forEachRow([&](sqlite3_stmt *row) {
        device = static_cast<api::Device *>(rows::allocate(sizeof(api::Device)));
        rows::readDevice(row, *device);
    });
    if (device != nullptr) {
        for (Statement *parts :
             {&m_getSectionsOfDevice, &m_getZonesOfDevice, &m_getDeviceUsersOfDevice, &m_getLinksOfDevice})
            parts->bind(1, sqlite3_int64{id});
        readParts({m_getSectionsOfDevice, m_getZonesOfDevice, m_getDeviceUsersOfDevice, m_getLinksOfDevice},
                  [device](unsigned int) { return device; });
        answers.take(device, 1, rows::release<api::Device>);
    }
    m_commit.run();
}

} // namespace bench
