#include "storage/sqlitedatabase.h"

#include <algorithm>
#include <functional>

namespace tarnelLib::controller {

namespace {

/// Finds the devices of one read by their identifiers. The rows of parts mostly come device by device.
class DeviceIndex
{
public:
    explicit DeviceIndex(std::span<Device> devices)
    {
        m_devices.reserve(devices.size());
        for (Device &device : devices)
            m_devices.push_back(&device);
        std::ranges::sort(m_devices, {}, &Device::id);
    }

    [[nodiscard]] std::vector<quint32> identifiers() const
    {
        std::vector<quint32> identifiers;
        identifiers.reserve(m_devices.size());
        for (const Device *device : m_devices)
            identifiers.push_back(device->id);
        return identifiers;
    }

    /// The device that a row of a part names in its first column; null if it is none of this read.
    [[nodiscard]] Device *ownerOf(const Statement &row)
    {
        quint32 id = 0;
        row.read(0, id);
        if (m_last == nullptr || m_last->id != id) {
            const auto found = std::ranges::lower_bound(m_devices, id, {}, &Device::id);
            m_last = found != m_devices.end() && (*found)->id == id ? *found : nullptr;
        }
        return m_last;
    }

private:
    std::vector<Device *> m_devices; ///< In the order of their identifiers.
    Device *m_last = nullptr;        ///< The one that was found last.
};

/// The part with an identifier, of a list in the order of identifiers; null if it is not there.
template <class Part>
Part *find(std::vector<Part> &parts, quint32 id)
{
    const auto part = std::ranges::lower_bound(parts, id, {}, &Part::id);
    return part != parts.end() && part->id == id ? &*part : nullptr;
}

/// Clients get parts in the order of their identifiers, which they mostly have.
template <class Part, class Identifier>
void sortParts(std::vector<Part> &parts, Identifier identifier)
{
    if (!std::ranges::is_sorted(parts, {}, identifier))
        std::ranges::sort(parts, {}, identifier);
}

} // namespace

/// What is stored for a device already, and is not in the record, stays.
bool SQLiteDatabase::doAddDevices(const std::vector<const Device *> &devices)
{
    const auto addRows = [&] {
        Batch<Device> inserts(*this, "add devices error");
        for (const Device *device : devices)
            inserts.add(*device);
        return inserts.finish();
    };
    const auto addSections = [&] {
        Batch<Section> inserts(*this, "add sections error");
        for (const Device *device : devices) {
            for (const Section &section : device->sections)
                inserts.add(section, device->id);
        }
        return inserts.finish();
    };
    const auto addZones = [&] {
        Batch<Zone> inserts(*this, "add zones error");
        for (const Device *device : devices) {
            for (const Section &section : device->sections) {
                for (const Zone &zone : section.zones)
                    inserts.add(zone, device->id, section.id);
            }
        }
        return inserts.finish();
    };
    const auto addDeviceUsers = [&] {
        Batch<DeviceUser> inserts(*this, "add device users error");
        for (const Device *device : devices) {
            for (const DeviceUser &user : device->deviceUsers)
                inserts.add(user, device->id);
        }
        return inserts.finish();
    };
    const auto addLinks = [&] {
        const DeviceUserSectionLink link;
        // The message of the device users: support reads it so in every log there is.
        Batch<DeviceUserSectionLink> inserts(*this, "add device users error");
        for (const Device *device : devices) {
            for (const DeviceUser &user : device->deviceUsers) {
                for (const quint32 section : user.sections)
                    inserts.add(link, device->id, user.id, section);
            }
        }
        return inserts.finish();
    };
    return addRows() && addSections() && addZones() && addDeviceUsers() && addLinks();
}

bool SQLiteDatabase::add(const std::vector<Device> &devices)
{
    return inTransaction([&] {
        std::vector<const Device *> pointers;
        pointers.reserve(devices.size());
        for (const Device &device : devices)
            pointers.push_back(&device);
        return doAddDevices(pointers);
    });
}

bool SQLiteDatabase::add(std::optional<Device> &device)
{
    return inTransaction([&] {
        const quint32 id = device->id;
        return doAddDevices({&*device}) && doGetDevice(device, id);
    });
}

bool SQLiteDatabase::get(std::vector<Device> &devices)
{
    return inTransaction([&] {
        return readAll(m_preparer.prepareGet<Device>(), devices, "get devices error") &&
               getExtraDeviceFields(devices, DevicesRead::All);
    });
}

bool SQLiteDatabase::get(std::vector<Device> &devices, const ModelField &field, std::u16string_view value)
{
    return inTransaction([&] {
        return readAll(m_preparer.prepareGetByField<Device>(field, value), devices, "get devices by field error") &&
               getExtraDeviceFields(devices, DevicesRead::Some);
    });
}

bool SQLiteDatabase::doGetDevice(std::optional<Device> &device, quint32 id)
{
    return readOne(m_preparer.prepareGet<Device>(id), device, "get device error") &&
           (!device || getExtraDeviceFields({&*device, 1}, DevicesRead::Some));
}

bool SQLiteDatabase::get(std::optional<Device> &device, quint32 id)
{
    return inTransaction([&] { return doGetDevice(device, id); });
}

/// Reads what is programmed into the devices: one statement for each kind of part, whatever the number of devices.
bool SQLiteDatabase::getExtraDeviceFields(std::span<Device> devices, DevicesRead read)
{
    DeviceIndex index(devices);
    const std::vector<quint32> identifiers = read == DevicesRead::Some ? index.identifiers() : std::vector<quint32>();
    const auto readParts = [&]<class Part>(const char *message, auto &&add, auto &&sort) {
        // SQLite takes half as long again to look the parts of all devices up as to scan them.
        Query query =
            read == DevicesRead::Some ? m_preparer.prepareGetOfSome<Part>(identifiers) : m_preparer.prepareGet<Part>();
        const bool isRead = readEach(std::move(query), message, [&](const Statement &row) {
            if (Device *owner = index.ownerOf(row))
                add(row, *owner);
        });
        std::ranges::for_each(devices, sort);
        return isRead;
    };
    const auto addSection = [](const Statement &row, Device &device) {
        RowReader::read(row, device.sections.emplace_back());
    };
    const auto sortSections = [](Device &device) { sortParts(device.sections, &Section::id); };
    const auto addZone = [](const Statement &row, Device &device) {
        quint32 section = 0;
        row.read(1, section);
        if (Section *owner = find(device.sections, section))
            RowReader::read(row, owner->zones.emplace_back());
    };
    const auto sortZones = [](Device &device) {
        for (Section &section : device.sections)
            sortParts(section.zones, &Zone::id);
    };
    const auto addDeviceUser = [](const Statement &row, Device &device) {
        RowReader::read(row, device.deviceUsers.emplace_back());
    };
    const auto sortDeviceUsers = [](Device &device) { sortParts(device.deviceUsers, &DeviceUser::id); };
    const auto addLink = [](const Statement &row, Device &device) {
        quint32 user = 0;
        row.read(1, user);
        if (DeviceUser *owner = find(device.deviceUsers, user))
            row.read(2, owner->sections.emplace_back());
    };
    const auto sortLinks = [](Device &device) {
        for (DeviceUser &user : device.deviceUsers)
            sortParts(user.sections, std::identity());
    };
    return readParts.template operator()<Section>("get sections for device error", addSection, sortSections) &&
           readParts.template operator()<Zone>("get zones for device section error", addZone, sortZones) &&
           readParts.template operator()<DeviceUser>("get device users error", addDeviceUser, sortDeviceUsers) &&
           readParts.template operator()<DeviceUserSectionLink>("get device user links error", addLink, sortLinks);
}

bool SQLiteDatabase::isDeviceExists(bool &isExists, quint32 id)
{
    return readExists(m_preparer.prepareIsExists<Device>(id), isExists, "is device exists error");
}

bool SQLiteDatabase::update(std::optional<Device> &device)
{
    return inTransaction([&] {
        const quint32 id = device->id;
        return run(prepareUpdateDeviceFw(*device), "update device firmware error") && doGetDevice(device, id);
    });
}

Query SQLiteDatabase::prepareUpdateDeviceFw(const Device &device)
{
    Query query = m_preparer.prepare({QueryPreparer::Verb::Special, &Schema<Device>::table}, [] {
        return std::string("UPDATE ").append(Schema<Device>::table) + " SET " +
               TableModel<Device>::column(&Device::configVersion).column() + " = ?" +
               sql::where(QueryPreparer::firstColumns<Device>(1));
    });
    QueryPreparer::bindAll(*query, device.configVersion, device.id);
    return query;
}

bool SQLiteDatabase::deleteDevice(quint32 id)
{
    return inTransaction([&] {
        return run(m_preparer.prepareDelete<Device>(id), "delete device error") &&
               run(m_preparer.prepareDelete<Section>(id), "delete sections for device error") &&
               run(m_preparer.prepareDelete<Zone>(id), "delete zones for device error") &&
               run(m_preparer.prepareDelete<DeviceUser>(id), "delete DeviceUsers for device error") &&
               run(m_preparer.prepareDelete<DeviceUserSectionLink>(id),
                   "delete DeviceUserSectionLinks for device error");
    });
}

} // namespace tarnelLib::controller
