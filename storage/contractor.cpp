#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Contractor> &contractors)
{
    return inTransaction([&] { return insertAll(std::span(contractors), "add contractors error"); });
}

bool SQLiteDatabase::get(std::vector<Contractor> &contractors)
{
    // The message of the read by field: support reads it so in every log there is.
    return readAll(m_preparer.prepareGet<Contractor>(), contractors, "get contractors by field error");
}

bool SQLiteDatabase::get(std::vector<Contractor> &contractors, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<Contractor>(field, value), contractors,
                   "get contractors by field error");
}

bool SQLiteDatabase::get(std::optional<Contractor> &contractor, quint32 id)
{
    return readOne(m_preparer.prepareGet<Contractor>(id), contractor, "get contractor by id error");
}

bool SQLiteDatabase::update(std::optional<Contractor> &contractor)
{
    return inTransaction([&] {
        const quint32 id = contractor->id;
        return run(m_preparer.prepareAddOrUpdate(*contractor), "add or update contractor error") && get(contractor, id);
    });
}

bool SQLiteDatabase::deleteContractor(quint32 id)
{
    return inTransaction([&] { return run(m_preparer.prepareDelete<Contractor>(id), "delete contractor error"); });
}

} // namespace tarnelLib::controller
