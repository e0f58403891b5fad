#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Domain> &domains)
{
    return inTransaction([&] { return insertAll(std::span(domains), "add domains error"); });
}

bool SQLiteDatabase::get(std::vector<Domain> &domains)
{
    return readAll(m_preparer.prepareGet<Domain>(), domains, "get domains error");
}

bool SQLiteDatabase::get(std::vector<Domain> &domains, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<Domain>(field, value), domains, "get domains by field error");
}

bool SQLiteDatabase::get(std::optional<Domain> &domain, quint32 id)
{
    return readOne(m_preparer.prepareGet<Domain>(id), domain, "get domain error");
}

bool SQLiteDatabase::update(std::optional<Domain> &domain)
{
    return inTransaction([&] {
        const quint32 id = domain->id;
        return run(m_preparer.prepareAddOrUpdate(*domain), "add or update domain error") && get(domain, id);
    });
}

bool SQLiteDatabase::deleteDomain(quint32 id)
{
    return inTransaction([&] { return run(m_preparer.prepareDelete<Domain>(id), "delete domain error"); });
}

} // namespace tarnelLib::controller
