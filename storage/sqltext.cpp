#include "storage/sqltext.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <iterator>

namespace tarnelLib::controller::sql {

namespace {

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

std::string names(const std::vector<TableColumn> &columns)
{
    return list(columns, [](const TableColumn &column) -> const std::string & { return column.name; });
}

std::vector<TableColumn> primaryKeyOf(const Table &table)
{
    std::vector<TableColumn> key;
    std::ranges::copy_if(table.columns, std::back_inserter(key), &TableColumn::isPrimaryKey);
    return key;
}

std::string insert(std::string_view verb, const Table &table, std::size_t rows = 1)
{
    const std::string row = concatenated({"(", list(table.columns, [](const TableColumn &) { return "?"; }), ")"});
    const std::string values = list(std::vector(rows, row), std::identity());
    return concatenated({verb, " ", table.name, " (", names(table.columns), ")VALUES ", values});
}

} // namespace

std::string createTable(const Table &table)
{
    // A key of one column stands beside the column, one of several at the end.
    const std::vector<TableColumn> key = primaryKeyOf(table);
    const bool hasSingleKey = key.size() == 1;
    const std::string columns = list(table.columns, [&](const TableColumn &column) {
        return concatenated({column.name, " ", column.type, hasSingleKey && column.isPrimaryKey ? " PRIMARY KEY" : ""});
    });
    const std::string combinedKey = hasSingleKey ? "" : concatenated({",PRIMARY KEY(", names(key), ")"});
    return concatenated({"CREATE TABLE ", table.name, " (", columns, combinedKey, ")"});
}

std::string insertOrReplace(const Table &table, std::size_t rows)
{
    const bool isKeyAlone = std::ranges::all_of(table.columns, &TableColumn::isPrimaryKey);
    return insert(isKeyAlone ? "INSERT OR IGNORE INTO" : "INSERT OR REPLACE INTO", table, rows);
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
        {insert("INSERT INTO", table), " ON CONFLICT(", names(primaryKeyOf(table)), ") DO UPDATE SET ", assignments});
}

std::string select(const Selection &selection)
{
    const std::string columns = list(selection.columns, [](const std::string &column) { return column; });
    std::string text = concatenated({"SELECT ", columns, " FROM ", selection.table});
    for (const Join &join : selection.joins)
        text += concatenated(
            {join.kind == JoinKind::Left ? " LEFT JOIN " : " INNER JOIN ", join.table, " ON ", join.condition});
    return text;
}

std::string renamed(std::string_view table, const std::vector<std::string> &columns, std::string_view suffix)
{
    const std::string renamings = list(columns, [&](const std::string &column) {
        return concatenated({column, " AS ", column, suffix});
    });
    return concatenated({"(SELECT ", renamings, " FROM ", table, ")"});
}

std::string deleteFrom(std::string_view table)
{
    return concatenated({"DELETE FROM ", table});
}

std::string where(const std::vector<std::string> &columns)
{
    std::string text;
    for (const std::string &column : columns)
        text += concatenated({text.empty() ? " WHERE " : " AND ", column, " = ?"});
    return text;
}

std::string whereIsListed(std::string_view column)
{
    return concatenated({" WHERE ", column, " IN (SELECT value FROM json_each(?))"});
}

} // namespace tarnelLib::controller::sql
