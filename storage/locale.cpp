#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::add(const std::vector<Locale> &locales)
{
    return inTransaction([&] { return insertAll(std::span(locales), "add locales error"); });
}

bool SQLiteDatabase::get(std::vector<Locale> &locales)
{
    return readAll(m_preparer.prepareGet<Locale>(), locales, "get locales error");
}

bool SQLiteDatabase::get(std::vector<Locale> &locales, const ModelField &field, std::u16string_view value)
{
    return readAll(m_preparer.prepareGetByField<Locale>(field, value), locales, "get locales by field error");
}

bool SQLiteDatabase::get(std::optional<Locale> &locale, quint32 id)
{
    return readOne(m_preparer.prepareGet<Locale>(id), locale, "get locale error");
}

} // namespace tarnelLib::controller
