#pragma once

#include "controller/entities/field.h"

#include <array>
#include <string>

namespace tarnelLib::controller
{

/// The names of one column: in the table and in JSON.
struct ModelField {
    std::string_view table;
    std::string_view field; ///< The column is the table's name followed by this.
    std::string_view key;   ///< The JSON key; empty if the value comes from an enclosing record.

    /// The column's name. It is unique in the whole database, so that joins need no qualifiers.
    [[nodiscard]] std::string column() const { return std::string(table).append(field); }
};

/// The names of a record's table, in the order of its field list.
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
        forEachColumn<Record>([&](const auto &row) { names[position++] = {table, row.field, row.key}; });
        return names;
    }();

    /// The column of a member of the record.
    template <class Member>
    static constexpr const ModelField &column(Member Record::*member)
    {
        std::size_t found = fields.size();
        std::size_t position = 0;
        forEachColumn<Record>([&](const auto &row) {
            if constexpr (std::is_same_v<decltype(row.member), const Member Record::*> ||
                          std::is_same_v<std::remove_cv_t<decltype(row.member)>, Member Record::*>) {
                if (row.member == member)
                    found = position;
            }
            ++position;
        });
        return fields.at(found);
    }
};

/// Maps the key of a filter to its column; null for a key that the record's requests do not have.
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
