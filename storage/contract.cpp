#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Contract> &contracts)
{
    return inTransaction([&] { return insertAll(std::span(contracts), "add contracts error"); });
}

bool SQLiteDatabase::get(std::vector<Contract> &contracts)
{
    return readAll(m_preparer.prepareGet<Contract>(), contracts, "get contracts error");
}

bool SQLiteDatabase::get(std::vector<Contract> &contracts, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<Contract>(field, value), contracts, "get contracts by field error");
}

bool SQLiteDatabase::get(std::optional<Contract> &contract, quint32 id)
{
    return readOne(m_preparer.prepareGet<Contract>(id), contract, "get contract by id error");
}

bool SQLiteDatabase::update(std::optional<Contract> &contract)
{
    return inTransaction([&] {
        const quint32 id = contract->id;
        return run(m_preparer.prepareAddOrUpdate(*contract), "add or update contract error") && get(contract, id);
    });
}

bool SQLiteDatabase::deleteContract(quint32 id)
{
    return inTransaction([&] { return run(m_preparer.prepareDelete<Contract>(id), "delete contract error"); });
}

} // namespace tarnelLib::controller
