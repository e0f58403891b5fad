#include "storage/parts.h"
#include "storage/tableoperations.h"

#include <functional>

namespace tarnelLib::controller {

template <>
const Messages Table<Device>::messages{
    .add = "add devices error",
    .getAll = "get devices error",
    .getByField = "get devices by field error",
    .get = "get device error",
    .update = "update device firmware error",
    .remove = "delete device error",
    .isExists = "is device exists error",
};

bool insertDevices(WriteConnection &writer, std::span<const Device *const> devices)
{
    /// A step that `add` gives the records which it finds in each device.
    const auto insert = [&]<class Record>(const char *message, auto &&add) {
        Batch<Record> inserts(writer, message);
        for (const Device *device : devices)
            add(inserts, *device);
        return inserts.finish();
    };
    const auto addDevice = [](auto &inserts, const Device &device) { inserts.add(device); };
    const auto addSections = [](auto &inserts, const Device &device) {
        for (const Section &section : device.sections)
            inserts.add(section, device.id);
    };
    const auto addZones = [](auto &inserts, const Device &device) {
        for (const Section &section : device.sections) {
            for (const Zone &zone : section.zones)
                inserts.add(zone, device.id, section.id);
        }
    };
    const auto addUsers = [](auto &inserts, const Device &device) {
        for (const DeviceUser &user : device.deviceUsers)
            inserts.add(user, device.id);
    };
    const DeviceUserSectionLink link;
    const auto addLinks = [&](auto &inserts, const Device &device) {
        for (const DeviceUser &user : device.deviceUsers) {
            for (const quint32 section : user.sections)
                inserts.add(link, device.id, user.id, section);
        }
    };
    return insert.template operator()<Device>("add devices error", addDevice) &&
           insert.template operator()<Section>("add sections error", addSections) &&
           insert.template operator()<Zone>("add zones error", addZones) &&
           insert.template operator()<DeviceUser>("add device users error", addUsers) &&
           // The message of the device users: support reads it so in every log there is.
           insert.template operator()<DeviceUserSectionLink>("add device users error", addLinks);
}

template <>
bool Table<Device>::insertSteps(WriteConnection &writer, std::span<const Device> devices)
{
    std::vector<const Device *> pointers;
    pointers.reserve(devices.size());
    for (const Device &device : devices)
        pointers.push_back(&device);
    return insertDevices(writer, pointers);
}

template <>
constexpr bool readsParts<Device> = true;

/// Reads what is programmed into the devices: one statement for each kind of part, whatever the number of devices.
template <>
bool Table<Device>::readParts(Connection &reader, std::span<api::Device> devices, Numbers asked, Selected selected)
{
    // SQLite takes half as long again to look the parts of all devices up as to scan them.
    const bool areAllRead = asked.empty() && selected == Selected::ByIdentifiers;
    OwnerIndex<api::Device> owners(devices);
    const std::vector<quint32> identifiers = areAllRead ? std::vector<quint32>() : owners.identifiers();
    const auto read = [&]<class Part>(const char *message, auto &&add, auto &&sort) {
        Query query = areAllRead ? reader.prepareGet<Part>() : reader.prepareGetOfSome<Part>(identifiers);
        const bool isRead = reader.readEach(std::move(query), message, [&](const Statement &row) {
            if (api::Device *owner = owners.ownerOf(row, 0))
                add(row, *owner);
        });
        std::ranges::for_each(devices, sort);
        return isRead;
    };
    const auto addSection = [](const Statement &row, api::Device &device) {
        readRecord<Section>(row, append(device.sections, device.sectionsCount));
    };
    const auto sortSections = [](api::Device &device) {
        sortParts(device.sections, device.sectionsCount, &api::Section::id);
    };
    const auto addZone = [](const Statement &row, api::Device &device) {
        if (api::Section *owner = findPart(device.sections, device.sectionsCount, row))
            readRecord<Zone>(row, append(owner->zones, owner->zonesCount));
    };
    const auto sortZones = [](api::Device &device) {
        for (const api::Section &section : std::span(device.sections, device.sectionsCount))
            sortParts(section.zones, section.zonesCount, &api::Zone::id);
    };
    const auto addUser = [](const Statement &row, api::Device &device) {
        readRecord<DeviceUser>(row, append(device.deviceUsers, device.deviceUsersCount));
    };
    const auto sortUsers = [](api::Device &device) {
        sortParts(device.deviceUsers, device.deviceUsersCount, &api::DeviceUser::id);
    };
    const auto addLink = [](const Statement &row, api::Device &device) {
        if (api::DeviceUser *owner = findPart(device.deviceUsers, device.deviceUsersCount, row))
            row.read(2, append(owner->sections, owner->sectionsCount));
    };
    const auto sortLinks = [](api::Device &device) {
        for (const api::DeviceUser &user : std::span(device.deviceUsers, device.deviceUsersCount))
            sortParts(user.sections, user.sectionsCount, std::identity());
    };
    return read.template operator()<Section>("get sections for device error", addSection, sortSections) &&
           read.template operator()<Zone>("get zones for device section error", addZone, sortZones) &&
           read.template operator()<DeviceUser>("get device users error", addUser, sortUsers) &&
           read.template operator()<DeviceUserSectionLink>("get device user links error", addLink, sortLinks);
}

/// Changes the configuration version alone.
template <>
bool Table<Device>::updateSteps(WriteConnection &writer, const Device &device, const ParentIds<Device> &)
{
    Query query = writer.prepare([] {
        return std::string("UPDATE ").append(Schema<Device>::table) + " SET " + columnOf(&Device::configVersion) +
               " = ?" + sql::where(firstColumns<Device>(1));
    });
    query->bindAll(device.configVersion, device.id);
    return writer.run(std::move(query), messages.update);
}

template <>
bool Table<Device>::removeSteps(WriteConnection &writer, Numbers identifiers)
{
    return writer.remove<Device>(identifiers, messages.remove) &&
           writer.remove<Section>(identifiers, "delete sections for device error") &&
           writer.remove<Zone>(identifiers, "delete zones for device error") &&
           writer.remove<DeviceUser>(identifiers, "delete DeviceUsers for device error") &&
           writer.remove<DeviceUserSectionLink>(identifiers, "delete DeviceUserSectionLinks for device error");
}

template class Table<Device>;

} // namespace tarnelLib::controller
