#pragma once

#include "storage/sqltext.h"
#include "storage/tablemodel.h"

#include <span>

namespace tarnelLib::controller {

/// Composes what a select of a record reads: its own columns, and where a row of the list joins another record, the
/// columns of that one. `RowReader` takes the columns in the same order.
class SelectionBuilder
{
public:
    template <class Record>
    static sql::Selection of()
    {
        SelectionBuilder builder;
        builder.m_selection.table = Schema<Record>::table;
        builder.addRecord<Record>({}, {}, Uncached::IdentifierAlone);
        return std::move(builder.m_selection);
    }

private:
    /// `suffix` is what the columns have behind their names in this select; `identifier` is the column that holds the
    /// record's identifier, if it is not the record's own.
    template <class Record>
    void addRecord(const std::string &suffix, const std::string &identifier, Uncached inherited)
    {
        const bool isAbsent = inherited == Uncached::Absent;
        const ModelField *field = TableModel<Record>::fields.data();
        forEachField<Record>([&]<class Row>(const Row &row) {
            if constexpr (is<Row, Reference>) {
                const std::string column = field++->column() + suffix;
                const Uncached uncached = isAbsent ? inherited : row.uncached;
                addJoined<typename Row::Nested>(column, Zero::IsIdentifier, uncached == Uncached::Absent ? "" : column,
                                                uncached);
            } else if constexpr (isJoined<Row>) {
                addJoined<typename Row::Nested>(TableModel<Record>::column(row.identifier).column() + suffix, row.zero,
                                                {}, isAbsent ? inherited : row.uncached);
            } else if constexpr (is<Row, Borrowed>) {
                addColumn(TableModel<typename Row::Source>::column(row.source).column());
            } else if constexpr (isStored<Row>) {
                const std::string own = field++->column() + suffix;
                addColumn(is<Row, Id> && !identifier.empty() ? identifier : own);
            }
        });
    }

    /// Adds another record, which a column of this one names.
    template <class Other>
    void addJoined(const std::string &column, Zero zero, const std::string &identifier, Uncached uncached)
    {
        const std::string suffix = join(Schema<Other>::table, TableModel<Other>::fields, column, zero);
        addRecord<Other>(suffix, identifier, uncached);
    }

    void addColumn(const std::string &column) { m_selection.columns.push_back(column); }
    /// Joins a table by its first column; gives the suffix of its columns, which tell a second join from the first.
    std::string join(std::string_view table, std::span<const ModelField> fields, const std::string &column, Zero zero);

    sql::Selection m_selection;
};

} // namespace tarnelLib::controller
