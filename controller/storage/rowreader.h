#pragma once

#include "controller/storage/sqltext.h"
#include "controller/storage/statement.h"
#include "controller/storage/tablemodel.h"

namespace tarnelLib::controller
{

/// What a select of a record reads: the record's own columns and, after the row that nests them, those of the records
/// joined to it. `RowReader` takes the columns in the same order.
class SelectionBuilder
{
public:
    template <class Record>
    static sql::Selection of()
    {
        SelectionBuilder builder;
        builder.m_selection.table = Schema<Record>::table;
        builder.addRecord<Record>(TableModel<Record>::column(&Record::id).column());
        return std::move(builder.m_selection);
    }

private:
    template <class Record>
    void addRecord(const std::string &identifierColumn)
    {
        forEachField<Record>([&](const auto &row) { add(row, identifierColumn); });
    }

    template <class Record, class Api>
    void add(const Id<Record, Api> &, const std::string &identifierColumn)
    {
        m_selection.columns.push_back(identifierColumn);
    }

    template <class Record, class Value, class Api, class ApiMember>
    void add(const Column<Record, Value, Api, ApiMember> &row, const std::string &)
    {
        m_selection.columns.push_back(TableModel<Record>::column(row.member).column());
    }

    /// The identifier is read from the record's own column, where it stands also while the other row is not stored.
    template <class Record, class Other, class Api, class ApiMember>
    void add(const Reference<Record, Other, Api, ApiMember> &row, const std::string &)
    {
        join<Other>(TableModel<Record>::column(row.member));
        addRecord<Other>(TableModel<Record>::column(row.member).column());
    }

    template <class Record, class Other, class Api, class ApiMember>
    void add(const Joined<Record, Other, Api, ApiMember> &row, const std::string &)
    {
        join<Other>(TableModel<Record>::column(row.identifier));
        addRecord<Other>(TableModel<Other>::column(&Other::id).column());
    }

    template <class Other>
    void join(const ModelField &namedBy)
    {
        m_selection.joins.push_back(
            {Schema<Other>::table, TableModel<Other>::column(&Other::id).column(), namedBy.column()});
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

    template <class Record, class Value, class Api, class ApiMember>
    void readField(const Column<Record, Value, Api, ApiMember> &field, Record &record)
    {
        m_row.read(m_column++, record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void readField(const Reference<Record, Other, Api, ApiMember> &field, Record &record)
    {
        readNested(record.*field.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    void readField(const Joined<Record, Other, Api, ApiMember> &field, Record &record)
    {
        readNested(record.*field.member);
    }

    /// A nested record starts with its identifier, and is absent where that is NULL.
    template <class Other>
    void readNested(std::optional<Other> &other)
    {
        if (m_row.isNull(m_column))
            m_column += columnCount<Other>();
        else
            readRecord(other.emplace());
    }

    template <class Record>
    static constexpr int columnCount()
    {
        int count = 0;
        forEachField<Record>([&](const auto &field) { count += columnsOf(field); });
        return count;
    }

    template <class Field>
    static constexpr int columnsOf(const Field &)
    {
        return 1;
    }
    template <class Record, class Other, class Api, class ApiMember>
    static constexpr int columnsOf(const Reference<Record, Other, Api, ApiMember> &)
    {
        return columnCount<Other>();
    }
    template <class Record, class Other, class Api, class ApiMember>
    static constexpr int columnsOf(const Joined<Record, Other, Api, ApiMember> &)
    {
        return columnCount<Other>();
    }

    const Statement &m_row;
    int m_column = 0;
};

} // namespace tarnelLib::controller
