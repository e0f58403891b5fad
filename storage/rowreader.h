#pragma once

#include "storage/sqltext.h"
#include "storage/statement.h"
#include "storage/tablemodel.h"

namespace tarnelLib::controller {

/// What a select of a record reads: the record's own columns and, where a row of the list nests another record, the
/// columns of that one, joined. `RowReader` takes the columns in the same order.
class SelectionBuilder
{
public:
    template <class Record>
    static sql::Selection of()
    {
        SelectionBuilder builder;
        builder.m_selection.table = Schema<Record>::table;
        builder.addRecord<Record>({}, Uncached::IdentifierAlone);
        return std::move(builder.m_selection);
    }

private:
    /// `identifier` is the column that holds the record's identifier, if it is not the record's own.
    template <class Record>
    void addRecord(const std::optional<std::string> &identifier, Uncached uncached)
    {
        std::size_t position = 0;
        forEachField<Record>([&](const auto &row) {
            if constexpr (Stored<decltype(row)>) {
                const std::string column = TableModel<Record>::fields[position++].column();
                addColumn(
                    row, identifier && requires { row.keys; } ? *identifier : column, uncached);
            } else {
                addFurther(row, uncached);
            }
        });
    }

    template <class Row>
    void addColumn(const Row &, const std::string &column, Uncached)
    {
        m_selection.columns.push_back(column);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void addColumn(const Reference<Record, Other, Api, ApiMember> &row, const std::string &column, Uncached inherited)
    {
        const bool isAbsent = inherited == Uncached::Absent || row.options.uncached == Uncached::Absent;
        const auto identifier = isAbsent ? std::nullopt : std::optional(column);
        join<Other>(column);
        addRecord<Other>(identifier, isAbsent ? Uncached::Absent : Uncached::IdentifierAlone);
    }

    template <class Record, class Other, class Api, class ApiMember, class Identifier>
    void addFurther(const Joined<Record, Other, Api, ApiMember, Identifier> &row, Uncached inherited)
    {
        join<Other>(TableModel<Record>::column(row.identifier).column());
        addRecord<Other>({}, inherited == Uncached::Absent ? inherited : row.uncached);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void addFurther(const Attached<Record, Other, Api, ApiMember> &, Uncached inherited)
    {
        join<Other>(TableModel<Record>::column(&Record::id).column());
        addRecord<Other>({}, inherited);
    }

    template <class Record, class Value, class Api, class ApiMember, class Other>
    void addFurther(const Borrowed<Record, Value, Api, ApiMember, Other> &row, Uncached)
    {
        m_selection.columns.push_back(TableModel<Other>::column(row.source).column());
    }

    template <class Record, class Other, class Api, class ApiMember>
    void addFurther(const ReadApart<Record, Other, Api, ApiMember> &, Uncached)
    {
    }

    template <class Record, class Item, class Api, class ApiItem>
    void addFurther(const Children<Record, Item, Api, ApiItem> &, Uncached)
    {
    }

    template <class Other>
    void join(const std::string &identifier)
    {
        m_selection.joins.push_back(
            {Schema<Other>::table, TableModel<Other>::column(&Other::id).column() + " = " + identifier});
    }

    sql::Selection m_selection;
};

/// Reads one record from the row on which a statement stands.
class RowReader
{
public:
    template <class Record>
    static void read(const Statement &row, Record &record)
    {
        RowReader(row).readRecord(record);
    }

private:
    explicit RowReader(const Statement &row) : m_row(row) {}

    template <class Record>
    void readRecord(Record &record)
    {
        forEachField<Record>([&](const auto &field) { readField(field, record); });
    }

    template <class Record, class Api>
    void readField(const Id<Record, Api> &field, Record &record)
    {
        m_row.read(m_column++, record.*field.member);
    }

    /// The identifiers of enclosing records come first, for those who put lists of several parents together.
    template <class Record>
    void readField(const ParentKey &, Record &)
    {
        ++m_column;
    }

    template <HoldsValue Row, class Record>
    void readField(const Row &field, Record &record)
    {
        m_row.read(m_column++, record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void readField(const Reference<Record, Other, Api, ApiMember> &field, Record &record)
    {
        readNested(record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember, class Identifier>
    void readField(const Joined<Record, Other, Api, ApiMember, Identifier> &field, Record &record)
    {
        readNested(record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void readField(const Attached<Record, Other, Api, ApiMember> &field, Record &record)
    {
        readNested(record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void readField(const ReadApart<Record, Other, Api, ApiMember> &, Record &)
    {
    }

    template <class Record, class Item, class Api, class ApiItem>
    void readField(const Children<Record, Item, Api, ApiItem> &, Record &)
    {
    }

    /// A nested record starts with its identifier, and is absent where that is NULL.
    template <class Other>
    void readNested(std::optional<Other> &other)
    {
        static const int columns = static_cast<int>(SelectionBuilder::of<Other>().columns.size());
        if (m_row.isNull(m_column))
            m_column += columns;
        else
            readRecord(other.emplace());
    }

    const Statement &m_row;
    int m_column = 0;
};

} // namespace tarnelLib::controller
