#include "storage/parts.h"
#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Section>::messages{
    .getAll = "get sections for device error",
    .getByField = "get sections for device by field error",
    .get = "get sections for device by id error",
    .update = "add or update section error",
    .remove = "delete device section error",
    .isExists = "is section exists error",
};

template <>
constexpr bool readsParts<Section> = true;

template <>
bool Table<Section>::readParts(Connection &reader, std::span<api::Section> sections, Numbers asked, Selected)
{
    OwnerIndex<api::Section> owners(sections);
    const auto addZone = [&](const Statement &row) {
        if (api::Section *owner = owners.ownerOf(row, 1))
            readRecord<Zone>(row, append(owner->zones, owner->zonesCount));
    };
    const bool isRead = reader.readEach(reader.prepareGet<Zone>(asked), "get zones for device section error", addZone);
    for (const api::Section &section : sections)
        sortParts(section.zones, section.zonesCount, &api::Zone::id);
    return isRead;
}

template <>
bool Table<Section>::removeSteps(WriteConnection &writer, Numbers identifiers)
{
    const auto prepareDeleteLinks = [&] {
        Query query = writer.prepare([] {
            const auto &[device, user, section] = modelFields<DeviceUserSectionLink>;
            return sql::deleteFrom(device.table) + sql::where(std::array{device, section});
        });
        query->bindNumbers(identifiers);
        return query;
    };
    // The zones twice: a trigger in the file can tell, and finds what it has always found.
    return writer.remove<Section>(identifiers, messages.remove) &&
           writer.remove<Zone>(identifiers, "delete zones for device section error") &&
           writer.remove<Zone>(identifiers, "delete zones for device section error") &&
           writer.run(prepareDeleteLinks(), "delete deviceUser-section link for device section error");
}

template class Table<Section>;

} // namespace tarnelLib::controller
