#pragma once

#include "entities/field.h"

#include <array>
#include <string>

namespace tarnelLib::controller {

/// The names of one column: in the table and in filters.
struct ModelField {
    std::string_view table;
    std::string_view field; ///< The column is the table's name followed by this.
    std::string_view key;   ///< The JSON key in filters; empty if lists cannot be filtered by the column.

    /// The column's name. It is unique in the whole database, so that joins need no qualifiers.
    [[nodiscard]] std::string column() const { return std::string(table).append(field); }
};

/// The word for a column in filters.
template <class Row>
constexpr std::string_view filterKey(const Row &row)
{
    if constexpr (requires { row.filter; })
        return row.filter == Filter::Accepted ? row.key : std::string_view();
    else if constexpr (requires { row.key; })
        return row.key;
    else
        return {};
}

/// The names of a record's table and its columns, in their order.
template <class Record>
class TableModel
{
public:
    static constexpr std::string_view table = Schema<Record>::table;

    static constexpr auto fields = [] {
        constexpr std::size_t count = [] {
            std::size_t stored = 0;
            forEachColumn<Record>([&](const auto &) { ++stored; });
            return stored;
        }();
        std::array<ModelField, count> names{};
        std::size_t position = 0;
        forEachColumn<Record>([&](const auto &row) { names[position++] = {table, row.field, filterKey(row)}; });
        return names;
    }();

    template <class Row>
    static std::string columnOf(const Row &row)
    {
        return ModelField{table, row.field, {}}.column();
    }

    /// The column of a member of the record.
    template <class Member>
    static constexpr const ModelField &column(Member Record::*member)
    {
        std::size_t position = 0;
        std::size_t found = fields.size();
        forEachColumn<Record>([&](const auto &row) {
            if constexpr (requires { row.member == member; }) {
                if (row.member == member)
                    found = position;
            }
            ++position;
        });
        return fields.at(found);
    }
};

/// Maps the key of a filter to its column; null for a word that is no filter of the record.
template <class Record>
const ModelField *toTableField(std::u16string_view key)
{
    for (const ModelField &field : TableModel<Record>::fields) {
        if (!field.key.empty() && std::equal(key.begin(), key.end(), field.key.begin(), field.key.end()))
            return &field;
    }
    return nullptr;
}

} // namespace tarnelLib::controller
