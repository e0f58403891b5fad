#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The texts of the SQL statements, composed from names.
namespace tarnelLib::controller::sql
{

/// A column as it stands in the table's definition.
struct TableColumn {
    std::string name;
    std::string_view type;
};

/// A table with its columns, of which the first `keyCount` are the primary key.
struct Table {
    std::string_view name;
    std::vector<TableColumn> columns;
    std::size_t keyCount = 1;
};

/// A table that a select joins, with the two columns that must be equal.
struct Join {
    std::string_view table;
    std::string column;
    std::string otherColumn;
};

/// What a select reads: columns of a table and of those joined to it.
struct Selection {
    std::string_view table;
    std::vector<std::string> columns;
    std::vector<Join> joins;
};

std::string createTable(const Table &table);

/// One marker per column, in the table's order; a stored row of the same key is replaced whole.
std::string insertOrReplace(const Table &table);

/// One marker per column, in the table's order, and a last one for a bit mask: a stored row of the same key keeps the
/// columns whose bit (counted from the first column) is not set.
std::string upsert(const Table &table);

std::string select(const Selection &selection);
std::string deleteFrom(std::string_view table);

/// The condition that a column equals a marker's value, to be appended to a statement that has none yet.
std::string where(std::string_view column);

} // namespace tarnelLib::controller::sql
