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
        text.append(std::invoke(toText, item));
    }
    return text;
}

std::string names(Columns columns)
{
    return list(columns, &ModelField::column);
}

std::vector<ModelField> primaryKeyOf(Columns table)
{
    std::vector<ModelField> key;
    std::ranges::copy_if(table, std::back_inserter(key), &ModelField::isPrimaryKey);
    return key;
}

std::string insert(std::string_view verb, Columns table, std::size_t rows = 1)
{
    const std::string row = concatenated({"(", list(table, [](const ModelField &) { return "?"; }), ")"});
    const std::string values = list(std::vector(rows, row), std::identity());
    return concatenated({verb, " ", table.front().table, " (", names(table), ")VALUES ", values});
}

std::string renamed(Columns table, std::string_view suffix)
{
    const std::string renamings = list(table, [&](const ModelField &column) {
        return concatenated({column.column(), " AS ", column.column(), suffix});
    });
    return concatenated({"(SELECT ", renamings, " FROM ", table.front().table, ")"});
}

} // namespace

std::string createTable(Columns table)
{
    // A key of one column stands beside the column, one of several at the end.
    const std::vector<ModelField> key = primaryKeyOf(table);
    const bool hasSingleKey = key.size() == 1;
    const std::string columns = list(table, [&](const ModelField &column) {
        const std::string_view ending = hasSingleKey && column.isPrimaryKey ? " PRIMARY KEY" : "";
        return concatenated({column.column(), " ", column.sqlType, ending});
    });
    const std::string combinedKey = hasSingleKey ? "" : concatenated({",PRIMARY KEY(", names(key), ")"});
    return concatenated({"CREATE TABLE ", table.front().table, " (", columns, combinedKey, ")"});
}

std::string insertOrReplace(Columns table, std::size_t rows)
{
    const bool isKeyAlone = std::ranges::all_of(table, &ModelField::isPrimaryKey);
    return insert(isKeyAlone ? "INSERT OR IGNORE INTO" : "INSERT OR REPLACE INTO", table, rows);
}

std::string upsert(Columns table)
{
    const std::string mask = concatenated({"?", std::to_string(table.size() + 1)});
    const std::string assignments = list(table, [&](const ModelField &column) {
        const std::string name = column.column();
        const std::string bit = std::to_string(1ULL << static_cast<unsigned>(&column - table.data()));
        return concatenated({name, "=CASE WHEN ", mask, "&", bit, " THEN excluded.", name, " ELSE ", name, " END"});
    });
    return concatenated(
        {insert("INSERT INTO", table), " ON CONFLICT(", names(primaryKeyOf(table)), ") DO UPDATE SET ", assignments});
}

Join joinOf(Columns table, const std::vector<std::string> &columns, JoinKind kind)
{
    std::string condition;
    for (std::size_t i = 0; i < columns.size(); ++i)
        condition += concatenated({i > 0 ? " AND " : "", columns[i], " = ", table[i].column()});
    return {std::string(table.front().table), condition, kind};
}

std::string select(const Selection &selection)
{
    const std::string columns = list(selection.columns, std::identity());
    std::string text = concatenated({"SELECT ", columns, " FROM ", selection.table});
    for (const Join &join : selection.joins)
        text += concatenated(
            {join.kind == JoinKind::Left ? " LEFT JOIN " : " INNER JOIN ", join.table, " ON ", join.condition});
    return text;
}

std::string join(Selection &selection, Columns table, const std::string &column, Zero zero)
{
    std::string suffix;
    std::string joined(table.front().table);
    if (std::ranges::find(selection.joins, joined, &Join::table) != selection.joins.end()) {
        suffix = "Again";
        joined = renamed(table, suffix);
    }
    const std::string condition = zero == Zero::IsNone ? " AND " + column + " <> 0" : "";
    selection.joins.push_back({joined, table.front().column() + suffix + " = " + column + condition});
    return suffix;
}

std::string deleteFrom(std::string_view table)
{
    return concatenated({"DELETE FROM ", table});
}

std::string where(Columns columns)
{
    std::string text;
    for (const ModelField &column : columns)
        text += concatenated({text.empty() ? " WHERE " : " AND ", column.column(), " = ?"});
    return text;
}

std::string whereIsListed(std::string_view column)
{
    return concatenated({" WHERE ", column, " IN (SELECT value FROM json_each(?))"});
}

} // namespace tarnelLib::controller::sql
