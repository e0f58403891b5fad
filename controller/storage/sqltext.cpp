#include "controller/storage/sqltext.h"

#include <initializer_list>
#include <span>

namespace tarnelLib::controller::sql
{

namespace
{

std::string concatenated(std::initializer_list<std::string_view> parts)
{
    std::string text;
    for (const std::string_view part : parts)
        text.append(part);
    return text;
}

/// One text per item, separated by commas.
template <class Items, class ToText>
std::string list(const Items &items, ToText &&toText)
{
    std::string text;
    for (const auto &item : items) {
        if (!text.empty())
            text.append(",");
        text.append(toText(item));
    }
    return text;
}

std::string names(std::span<const TableColumn> columns)
{
    return list(columns, [](const TableColumn &column) -> const std::string & { return column.name; });
}

std::span<const TableColumn> keyOf(const Table &table)
{
    return std::span(table.columns).first(table.keyCount);
}

std::string insert(std::string_view verb, const Table &table)
{
    const std::string markers = list(table.columns, [](const TableColumn &) { return "?"; });
    return concatenated({verb, " ", table.name, " (", names(table.columns), ")VALUES (", markers, ")"});
}

} // namespace

std::string createTable(const Table &table)
{
    const bool hasSingleKey = table.keyCount == 1;
    const std::string columns = list(table.columns, [&](const TableColumn &column) {
        const bool isKey = hasSingleKey && &column == table.columns.data();
        return concatenated({column.name, " ", column.type, isKey ? " PRIMARY KEY" : ""});
    });
    const std::string key = hasSingleKey ? "" : concatenated({",PRIMARY KEY(", names(keyOf(table)), ")"});
    return concatenated({"CREATE TABLE ", table.name, " (", columns, key, ")"});
}

std::string insertOrReplace(const Table &table)
{
    return insert("INSERT OR REPLACE INTO", table);
}

std::string upsert(const Table &table)
{
    const std::string mask = concatenated({"?", std::to_string(table.columns.size() + 1)});
    const std::string assignments = list(table.columns, [&](const TableColumn &column) {
        const std::string bit = std::to_string(1ULL << static_cast<unsigned>(&column - table.columns.data()));
        return concatenated({column.name, "=CASE WHEN ", mask, "&", bit, " THEN excluded.", column.name, " ELSE ",
                             column.name, " END"});
    });
    return concatenated(
        {insert("INSERT INTO", table), " ON CONFLICT(", names(keyOf(table)), ") DO UPDATE SET ", assignments});
}

std::string select(const Selection &selection)
{
    const std::string columns = list(selection.columns, [](const std::string &column) { return column; });
    std::string text = concatenated({"SELECT ", columns, " FROM ", selection.table});
    for (const Join &join : selection.joins)
        text += concatenated({" LEFT JOIN ", join.table, " ON ", join.column, " = ", join.otherColumn});
    return text;
}

std::string deleteFrom(std::string_view table)
{
    return concatenated({"DELETE FROM ", table});
}

std::string where(std::string_view column)
{
    return concatenated({" WHERE ", column, " = ?"});
}

} // namespace tarnelLib::controller::sql
