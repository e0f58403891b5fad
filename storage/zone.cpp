#include "storage/sqlitedatabase.h"

namespace tarnelLib::controller {

bool SQLiteDatabase::get(std::vector<Zone> &zones, quint32 device)
{
    return readAll(m_preparer.prepareGet<Zone>(device), zones, "get zones for device error");
}

bool SQLiteDatabase::get(std::vector<Zone> &zones, quint32 device, quint32 section)
{
    return readAll(m_preparer.prepareGet<Zone>(device, section), zones, "get zones for device section error");
}

bool SQLiteDatabase::get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value, quint32 device)
{
    return readAll(m_preparer.prepareGetByField<Zone>(field, value, device), zones,
                   "get zones for device by field error");
}

bool SQLiteDatabase::get(std::vector<Zone> &zones, const ModelField &field, std::u16string_view value, quint32 device,
                         quint32 section)
{
    return readAll(m_preparer.prepareGetByField<Zone>(field, value, device, section), zones,
                   "get zones for device section by field error");
}

bool SQLiteDatabase::get(std::optional<Zone> &zone, quint32 device, quint32 section, quint32 id)
{
    return readOne(m_preparer.prepareGet<Zone>(device, section, id), zone, "get zones for device section by id error");
}

bool SQLiteDatabase::update(std::optional<Zone> &zone, quint32 device, quint32 section)
{
    return inTransaction([&] {
        const quint32 id = zone->id;
        return run(m_preparer.prepareAddOrUpdate(*zone, device, section), "add or update zone error") &&
               get(zone, device, section, id);
    });
}

bool SQLiteDatabase::deleteZone(quint32 device, quint32 section, quint32 id)
{
    return inTransaction([&] { return run(m_preparer.prepareDelete<Zone>(device, section, id), "delete zone error"); });
}

} // namespace tarnelLib::controller
