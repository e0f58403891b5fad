#include "storage/selection.h"

#include <algorithm>

namespace tarnelLib::controller {

std::string SelectionBuilder::join(std::string_view table, std::span<const ModelField> fields,
                                   const std::string &column, Zero zero)
{
    std::vector<std::string> columns;
    std::ranges::transform(fields, std::back_inserter(columns), &ModelField::column);
    std::string suffix;
    std::string joined(table);
    const auto isJoined = [&](const sql::Join &join) { return join.table == table; };
    if (std::ranges::any_of(m_selection.joins, isJoined)) {
        suffix = "Again";
        joined = sql::renamed(table, columns, suffix);
    }
    const std::string condition = zero == Zero::IsNone ? " AND " + column + " <> 0" : "";
    m_selection.joins.push_back({joined, columns.front() + suffix + " = " + column + condition});
    return suffix;
}

} // namespace tarnelLib::controller
