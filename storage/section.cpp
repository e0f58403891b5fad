#include "storage/sqlitedatabase.h"

#include <algorithm>

namespace tarnelLib::controller {

/// Puts zones of one device under those of its sections that are there; these are in the order of their identifiers.
bool SQLiteDatabase::getZonesOf(std::span<Section> sections, Query &&zones)
{
    return readEach(std::move(zones), "get zones for device section error", [&](const Statement &row) {
        quint32 id = 0;
        row.read(1, id);
        const auto section = std::ranges::lower_bound(sections, id, {}, &Section::id);
        if (section != sections.end() && section->id == id)
            RowReader::read(row, section->zones.emplace_back());
    });
}

bool SQLiteDatabase::get(std::vector<Section> &sections, quint32 device)
{
    return inTransaction([&] {
        return readAll(m_preparer.prepareGet<Section>(device), sections, "get sections for device error") &&
               getZonesOf(sections, m_preparer.prepareGet<Zone>(device));
    });
}

bool SQLiteDatabase::get(std::vector<Section> &sections, const ModelField &field, std::u16string_view value,
                         quint32 device)
{
    return inTransaction([&] {
        return readAll(m_preparer.prepareGetByField<Section>(field, value, device), sections,
                       "get sections for device by field error") &&
               getZonesOf(sections, m_preparer.prepareGet<Zone>(device));
    });
}

bool SQLiteDatabase::doGetSectionForDeviceById(std::optional<Section> &section, quint32 device, quint32 id)
{
    return readOne(m_preparer.prepareGet<Section>(device, id), section, "get sections for device by id error") &&
           (!section || getZonesOf({&*section, 1}, m_preparer.prepareGet<Zone>(device, id)));
}

bool SQLiteDatabase::get(std::optional<Section> &section, quint32 device, quint32 id)
{
    return inTransaction([&] { return doGetSectionForDeviceById(section, device, id); });
}

bool SQLiteDatabase::isSectionExists(bool &isExists, quint32 device, quint32 id)
{
    return readExists(m_preparer.prepareIsExists<Section>(device, id), isExists, "is section exists error");
}

bool SQLiteDatabase::update(std::optional<Section> &section, quint32 device)
{
    return inTransaction([&] {
        const quint32 id = section->id;
        return run(m_preparer.prepareAddOrUpdate(*section, device), "add or update section error") &&
               doGetSectionForDeviceById(section, device, id);
    });
}

bool SQLiteDatabase::deleteSection(quint32 device, quint32 id)
{
    return inTransaction([&] {
        return run(m_preparer.prepareDelete<Section>(device, id), "delete device section error") &&
               run(m_preparer.prepareDelete<Zone>(device, id), "delete zones for device section error") &&
               run(prepareDeleteLinksOfSection(device, id), "delete deviceUser-section link for device section error");
    });
}

Query SQLiteDatabase::prepareDeleteLinksOfSection(quint32 device, quint32 section)
{
    using Model = TableModel<DeviceUserSectionLink>;
    Query query = m_preparer.prepare({QueryPreparer::Verb::Special, &Model::table, 1}, [] {
        return sql::deleteFrom(Model::table) + sql::where({Model::fields.at(0).column(), Model::fields.at(2).column()});
    });
    QueryPreparer::bindAll(*query, device, section);
    return query;
}

} // namespace tarnelLib::controller
