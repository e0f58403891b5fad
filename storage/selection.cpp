#include "storage/selection.h"

#include <algorithm>

namespace tarnelLib::controller {

std::string join(sql::Selection &selection, sql::Columns table, const std::string &column, Zero zero)
{
    std::string suffix;
    std::string joined(table.front().table);
    if (std::ranges::find(selection.joins, joined, &sql::Join::table) != selection.joins.end()) {
        suffix = "Again";
        joined = sql::renamed(table, suffix);
    }
    const std::string condition = zero == Zero::IsNone ? " AND " + column + " <> 0" : "";
    selection.joins.push_back({joined, table.front().column() + suffix + " = " + column + condition});
    return suffix;
}

} // namespace tarnelLib::controller
