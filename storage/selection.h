#pragma once

#include "storage/sqltext.h"
#include "storage/tablemodel.h"

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
        builder.addRecord<Record>(std::string(Schema<Record>::table), {}, Uncached::IdentifierAlone);
        return std::move(builder.m_selection);
    }

private:
    /// `name` is that of the table in this select, `identifier` the column that holds the record's identifier if it is
    /// not the record's own.
    template <class Record>
    void addRecord(const std::string &name, const std::string &identifier, Uncached inherited)
    {
        const bool isAbsent = inherited == Uncached::Absent;
        const ModelField *field = TableModel<Record>::fields.data();
        forEachField<Record>([&]<class Row>(const Row &row) {
            if constexpr (is<Row, Reference>) {
                const std::string column = columnOf(name, *field++);
                const Uncached uncached = isAbsent ? inherited : row.uncached;
                addJoined<typename Row::Nested>(column, Zero::IsIdentifier, uncached == Uncached::Absent ? "" : column,
                                                uncached);
            } else if constexpr (isJoined<Row>) {
                addJoined<typename Row::Nested>(columnOf(name, TableModel<Record>::column(row.identifier)), row.zero,
                                                {}, isAbsent ? inherited : row.uncached);
            } else if constexpr (is<Row, Borrowed>) {
                addColumn(TableModel<typename Row::Source>::column(row.source).column());
            } else if constexpr (isStored<Row>) {
                const std::string own = columnOf(name, *field++);
                addColumn(is<Row, Id> && !identifier.empty() ? identifier : own);
            }
        });
    }

    /// Adds another record, which a column of this one names.
    template <class Other>
    void addJoined(const std::string &column, Zero zero, const std::string &identifier, Uncached uncached)
    {
        addRecord<Other>(join(Schema<Other>::table, TableModel<Other>::column(&Other::id), column, zero), identifier,
                         uncached);
    }

    static std::string columnOf(const std::string &table, const ModelField &field);
    void addColumn(const std::string &column) { m_selection.columns.push_back(column); }
    /// Gives the name that the table has in this select: one of its own if it is joined already.
    std::string join(std::string_view table, const ModelField &key, const std::string &column, Zero zero);

    sql::Selection m_selection;
};

} // namespace tarnelLib::controller
