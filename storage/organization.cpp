#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Organization> &organizations)
{
    return inTransaction([&] {
        if (!insertAll(std::span(organizations), "add organizations error"))
            return false;
        Batch<Person> persons(*this, "add persons error");
        for (const Organization &organization : organizations) {
            if (organization.contact)
                persons.add(*organization.contact);
        }
        return persons.finish();
    });
}

bool SQLiteDatabase::get(std::vector<Organization> &organizations)
{
    return readAll(m_preparer.prepareGet<Organization>(), organizations, "get organizations error");
}

bool SQLiteDatabase::get(std::vector<Organization> &organizations, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<Organization>(field, value), organizations,
                   "get organizations by field error");
}

bool SQLiteDatabase::get(std::optional<Organization> &organization, quint32 id)
{
    return readOne(m_preparer.prepareGet<Organization>(id), organization, "get organization error");
}

bool SQLiteDatabase::update(std::optional<Organization> &organization)
{
    return inTransaction([&] {
        const quint32 id = organization->id;
        return run(m_preparer.prepareAddOrUpdate(*organization), "add or update organization error") &&
               (!organization->contact || replace(*organization->contact, "add or update person error")) &&
               get(organization, id);
    });
}

Query SQLiteDatabase::prepareDeletePersonOfOrganization(quint32 id)
{
    Query query = m_preparer.prepare({QueryPreparer::Verb::Special, &Schema<Person>::table}, [] {
        const sql::Selection contact{.table = Schema<Organization>::table,
                                     .columns = {TableModel<Organization>::column(&Organization::contact).column()},
                                     .joins = {}};
        return sql::deleteFrom(Schema<Person>::table) + " WHERE " + TableModel<Person>::column(&Person::id).column() +
               " = (" + sql::select(contact) + sql::where(QueryPreparer::firstColumns<Organization>(1)) + ")";
    });
    query->bind(1, id);
    return query;
}

bool SQLiteDatabase::deleteOrganization(quint32 id)
{
    // The contact is found through the organization's row, which must still be there.
    return inTransaction([&] {
        return run(prepareDeletePersonOfOrganization(id), "delete person error") &&
               run(m_preparer.prepareDelete<Organization>(id), "delete organization error");
    });
}

} // namespace tarnelLib::controller
