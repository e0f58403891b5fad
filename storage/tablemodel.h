#pragma once

#include "entities/field.h"

#include <array>
#include <span>
#include <string>

namespace tarnelLib::controller {

/// One column: in its table, and in filters.
struct ModelField {
    std::string_view table;
    std::string_view field; ///< The column is the table's name followed by this.
    std::string_view key;   ///< The JSON key in filters; empty if lists cannot be filtered by the column.
    std::string_view sqlType;
    bool isPrimaryKey;

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

/// The columns of a record's table, in their order.
template <class Record>
constexpr auto modelFields = [] {
    constexpr std::size_t count = [] {
        std::size_t stored = 0;
        forEachColumn<Record>([&](const auto &) { ++stored; });
        return stored;
    }();
    std::array<ModelField, count> fields{};
    std::size_t position = 0;
    forEachColumn<Record>([&](const auto &row) {
        fields[position++] = {Schema<Record>::table, row.field, filterKey(row), row.sqlType, row.isPrimaryKey};
    });
    return fields;
}();

/// The first columns of a record's table: the identifiers, in their order.
template <class Record>
std::span<const ModelField> firstColumns(std::size_t count)
{
    return std::span<const ModelField>(modelFields<Record>).first(count);
}

/// The column of a member of the record.
template <class Record, class Member>
std::string columnOf(Member Record::*member)
{
    std::string column;
    std::size_t position = 0;
    forEachColumn<Record>([&](const auto &row) {
        if constexpr (requires { row.member == member; }) {
            if (row.member == member)
                column = modelFields<Record>.at(position).column();
        }
        ++position;
    });
    return column;
}

/// Maps the key of a filter to its column; null for a word that is no filter of the record.
template <class Record>
const ModelField *toTableField(std::u16string_view key)
{
    for (const ModelField &field : modelFields<Record>) {
        if (!field.key.empty() && std::equal(key.begin(), key.end(), field.key.begin(), field.key.end()))
            return &field;
    }
    return nullptr;
}

} // namespace tarnelLib::controller
