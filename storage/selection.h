#pragma once

#include "storage/sqltext.h"
#include "storage/statement.h"

/// What a select of a record reads: its own columns, and where a row of the list joins another record, the columns of
/// that one. `addColumns` and `readColumns` go through them in the same order.
namespace tarnelLib::controller {

/// `suffix` is what the columns have behind their names in this select; `identifier` is the column that holds the
/// record's identifier, if it is not the record's own.
template <class Record>
void addColumns(sql::Selection &selection, const std::string &suffix, const std::string &identifier, Uncached inherited)
{
    forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (isJoined<Row>) {
            using Other = typename Row::Nested;
            std::string column;
            if constexpr (is<Row, Reference>)
                column = columnOf(row.member) + suffix;
            else
                column = columnOf(row.identifier) + suffix;
            const Uncached uncached = inherited == Uncached::Absent ? inherited : row.uncached;
            const std::string others = sql::join(selection, modelFields<Other>, column, row.zero);
            const bool isReadAlone = is<Row, Reference> && uncached == Uncached::IdentifierAlone;
            addColumns<Other>(selection, others, isReadAlone ? column : std::string(), uncached);
        } else if constexpr (is<Row, Borrowed>) {
            selection.columns.push_back(columnOf(row.source));
        } else if constexpr (isStored<Row>) {
            const std::string own = std::string(Schema<Record>::table).append(row.field).append(suffix);
            selection.columns.push_back(is<Row, Id> && !identifier.empty() ? identifier : own);
        }
    });
}

template <class Record>
sql::Selection selectionOf()
{
    sql::Selection selection{.table = Schema<Record>::table};
    addColumns<Record>(selection, {}, {}, Uncached::IdentifierAlone);
    return selection;
}

/// Reads a row's columns, from `column` on, into a structure of which every member is null.
template <class Record>
void readColumns(const Statement &row, int &column, ApiOf<Record> &structure)
{
    forEachField<Record>([&]<class Row>(const Row &field) {
        if constexpr (isParentKey<Row>) {
            ++column; // Callers that need a parent read it themselves.
        } else if constexpr (isJoined<Row>) {
            using Other = typename Row::Nested;
            static const int columns = static_cast<int>(selectionOf<Other>().columns.size());
            // Another record starts with its identifier, and is absent where that is NULL.
            if (row.isNull(column))
                column += columns;
            else
                readColumns<Other>(row, column, *(structure.*field.apiMember = allocate(ApiOf<Other>{})));
        } else if constexpr (isStored<Row> || is<Row, Borrowed>) {
            row.read(column++, structure.*field.apiMember);
        }
    });
}

/// Reads the record in the row on which a statement stands.
template <class Record>
void readRecord(const Statement &row, ApiOf<Record> &structure)
{
    int column = 0;
    readColumns<Record>(row, column, structure);
}

} // namespace tarnelLib::controller
