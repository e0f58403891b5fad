#pragma once

#include "storage/selection.h"

#include <map>

namespace tarnelLib::controller {

/// Identifiers in the order of a table's first columns: those of enclosing records, then the record's own.
using Numbers = std::span<const quint32>;

/// Prepares every statement of one connection once, and binds what a use of it needs.
///
/// Fewer identifiers than the table has mean all records that share them. A query whose statement cannot be prepared
/// (its table is gone, or there is no connection) is handed out all the same, and fails with the reason when it is run.
class QueryPreparer
{
public:
    /// Starts with a connection; the statements of an earlier one are finalized.
    void attach(sqlite3 *connection)
    {
        m_statements.clear();
        m_connection = connection;
    }

    /// Finalizes every statement, which must happen before the connection is closed.
    void detach() { attach(nullptr); }

    [[nodiscard]] sqlite3 *connection() const { return m_connection; }

    /// The statement whose text `compose` gives. It is kept for the place that composes it: `number` and `name` (by
    /// address) tell apart what one place composes in several versions.
    template <class Compose>
    Query prepare(Compose &&compose, std::size_t number = 0, const void *name = nullptr)
    {
        static const char place = 0;
        Statement &statement = m_statements[Key(&place, name, number)];
        if (!statement.isPrepared())
            statement.prepare(m_connection, compose());
        return Query(&statement);
    }

    /// A statement that is always the same.
    Query prepareText(const char *sql)
    {
        return prepare([sql] { return sql; }, 0, sql);
    }

    /// A statement about the records that share the identifiers; `compose` gives its text up to that condition.
    template <class Record, class Compose>
    Query prepareFor(Numbers identifiers, Compose &&compose)
    {
        Query query = prepare([&] { return compose() + sql::where(firstColumns<Record>(identifiers.size())); },
                              identifiers.size());
        query->bindNumbers(identifiers);
        return query;
    }

    /// An insert of `records` records, to be filled with `bindRecord`. A stored row is replaced whole.
    template <class Record>
    Query prepareAdd(std::size_t records)
    {
        return prepare([records] { return sql::insertOrReplace(modelFields<Record>, records); }, records);
    }

    /// Binds a record's columns from a position on; returns the one behind them.
    template <class Record>
    static int bindRecord(Statement &statement, int position, const Record &record, const ParentIds<Record> &parents)
    {
        std::size_t parent = 0;
        forEachColumn<Record>([&]<class Row>(const Row &row) {
            if constexpr (isParentKey<Row>)
                statement.bind(position, parents.at(parent++));
            else if constexpr (!requires { (record.*row.member)->id; })
                statement.bind(position, record.*row.member);
            else if (record.*row.member)
                statement.bind(position, (record.*row.member)->id);
            ++position;
        });
        return position;
    }

    /// An insert that, where the row is already stored, changes only the columns of the fields that the record has.
    template <class Record>
    Query prepareAddOrUpdate(const Record &record, const ParentIds<Record> &parents)
    {
        Query query = prepare([] { return sql::upsert(modelFields<Record>); });
        const int maskPosition = bindRecord(*query, 1, record, parents);
        quint64 present = 0;
        quint64 bit = 1;
        forEachColumn<Record>([&]<class Row>(const Row &row) {
            bool isPresent = true; // Identifiers are.
            if constexpr (!isParentKey<Row> && !is<Row, Id>)
                isPresent = (record.*row.member).has_value();
            present |= isPresent ? bit : 0;
            bit <<= 1;
        });
        query->bind(maskPosition, present);
        return query;
    }

    template <class Record>
    Query prepareGet(Numbers identifiers = {})
    {
        return prepareFor<Record>(identifiers, [] { return sql::select(selectionOf<Record>()); });
    }

    /// The value is compared as text, which the column's affinity turns into a number where the column holds numbers.
    template <class Record>
    Query prepareGetByField(const ModelField &field, std::u16string_view value, Numbers parents)
    {
        Query query = prepare(
            [&] {
                const auto first = firstColumns<Record>(parents.size());
                std::vector<ModelField> columns(first.begin(), first.end());
                columns.push_back(field);
                return sql::select(selectionOf<Record>()) + sql::where(columns);
            },
            parents.size(), &field);
        query->bindNumbers(parents);
        query->bind(static_cast<int>(parents.size()) + 1, value);
        return query;
    }

    /// The records of which the first column is one of the identifiers.
    template <class Record>
    Query prepareGetOfSome(Numbers identifiers)
    {
        // A list costs a statement of its own to take apart.
        if (identifiers.size() == 1)
            return prepareGet<Record>(identifiers);
        Query query = prepare([] {
            return sql::select(selectionOf<Record>()) + sql::whereIsListed(modelFields<Record>.front().column());
        });
        query->bindList(1, identifiers);
        return query;
    }

    template <class Record>
    Query prepareIsExists(Numbers identifiers)
    {
        return prepareFor<Record>(identifiers,
                                  [] { return sql::select({.table = Schema<Record>::table, .columns = {"1"}}); });
    }

private:
    using Key = std::tuple<const void *, const void *, std::size_t>;

    sqlite3 *m_connection = nullptr;
    std::map<Key, Statement> m_statements;
};

} // namespace tarnelLib::controller
