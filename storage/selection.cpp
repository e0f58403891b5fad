#include "storage/selection.h"

#include <algorithm>

namespace tarnelLib::controller {

std::string SelectionBuilder::columnOf(const std::string &table, const ModelField &field)
{
    return table + "." + field.column();
}

std::string SelectionBuilder::join(std::string_view table, const ModelField &key, const std::string &column, Zero zero)
{
    const auto before = std::ranges::count(m_selection.joins, table, &sql::Join::table);
    std::string name = std::string(table) + (before == 0 ? "" : std::to_string(before + 1));
    const std::string condition = zero == Zero::IsNone ? " AND " + column + " <> 0" : "";
    m_selection.joins.push_back({table, name, columnOf(name, key) + " = " + column + condition});
    return name;
}

} // namespace tarnelLib::controller
