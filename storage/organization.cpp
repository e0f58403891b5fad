#include "storage/tableoperations.h"

namespace tarnelLib::controller {

template <>
const Messages Table<Organization>::messages{
    .add = "add organizations error",
    .getAll = "get organizations error",
    .getByField = "get organizations by field error",
    .get = "get organization error",
    .update = "add or update organization error",
    .remove = "delete organization error",
};

template <>
bool Table<Organization>::insertSteps(WriteConnection &writer, std::span<const Organization> organizations)
{
    if (!insertAll(writer, organizations, messages.add))
        return false;
    Batch<Person> persons(writer, "add persons error");
    for (const Organization &organization : organizations) {
        if (organization.contact)
            persons.add(*organization.contact);
    }
    return persons.finish();
}

template <>
bool Table<Organization>::updateSteps(WriteConnection &writer, const Organization &organization,
                                      const ParentIds<Organization> &)
{
    return writer.run(writer.prepareAddOrUpdate(organization, {}), messages.update) &&
           (!organization.contact || writer.replace(*organization.contact, "add or update person error"));
}

template <>
bool Table<Organization>::removeSteps(WriteConnection &writer, Numbers identifiers)
{
    const auto prepareDeleteContact = [&] {
        Query query = writer.prepare([] {
            return sql::deleteFrom(Schema<Person>::table) + " WHERE " + columnOf(&Person::id) + " = (" +
                   sql::select({.table = Schema<Organization>::table, .columns = {columnOf(&Organization::contact)}}) +
                   sql::where(firstColumns<Organization>(1)) + ")";
        });
        query->bindNumbers(identifiers);
        return query;
    };
    // The contact is found through the organization's row, which must still be there.
    return writer.run(prepareDeleteContact(), "delete person error") &&
           writer.remove<Organization>(identifiers, messages.remove);
}

template class Table<Organization>;

} // namespace tarnelLib::controller
