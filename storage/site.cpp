#include "storage/database.h"
#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Site>::messages{
    .add = "add sites error",
    .getAll = "get sites error",
    .getByField = "get sites by field error",
    .get = "get site by id error",
    .update = "update site error",
    .remove = "delete site error",
    .isExists = "is site exists error",
};

template <>
bool Table<Site>::insertSteps(WriteConnection &writer, std::span<const Site> sites)
{
    std::vector<const Device *> devices;
    for (const Site &site : sites) {
        for (const Device &device : site.devices)
            devices.push_back(&device);
    }
    if (!insertAll(writer, sites, messages.add) || !insertDevices(writer, devices))
        return false;
    Batch<Location> locations(writer, "add locations error");
    for (const Site &site : sites) {
        if (site.location)
            locations.add(*site.location);
    }
    return locations.finish();
}

/// Devices in the request are not stored: they have updates of their own.
template <>
bool Table<Site>::updateSteps(WriteConnection &writer, const Site &site, const ParentIds<Site> &)
{
    return writer.run(writer.prepareAddOrUpdate(site, {}), messages.update) &&
           (!site.location || writer.replace(*site.location, "add or update location error"));
}

template <>
bool Table<Site>::removeSteps(WriteConnection &writer, Numbers identifiers)
{
    return writer.remove<Location>(identifiers, "delete location error") &&
           writer.remove<Site>(identifiers, messages.remove);
}

bool Database::getSiteFields(Connection &reader, SiteFields &fields, quint32 id)
{
    const auto prepareGetFields = [&] {
        return reader.prepareFor<Site>({&id, 1}, [] {
            return sql::select(
                {.table = Schema<Site>::table, .columns = {columnOf(&Site::name), columnOf(&Site::address)}});
        });
    };
    return reader.inSnapshot([&] {
        return Table<Site>::isExists(reader, fields.isSiteStored, {&id, 1}) &&
               (!fields.isSiteStored ||
                reader.readFirst(prepareGetFields(), "get site fields error", [&](const Statement &row) {
                    fields.name = row.readText(0);
                    fields.address = row.readText(1);
                }));
    });
}

template class Table<Site>;

} // namespace tarnelLib::controller
