#pragma once

#include "storage/rowreader.h"

#include <span>
#include <unordered_map>

namespace tarnelLib::controller {

/// A record's table as it is created.
template <class Record>
sql::Table tableOf()
{
    sql::Table table{.name = Schema<Record>::table, .columns = {}};
    std::size_t position = 0;
    forEachColumn<Record>([&](const auto &row) {
        table.columns.push_back({TableModel<Record>::fields[position++].column(), row.sqlType, row.isPrimaryKey});
    });
    return table;
}

/// Prepares every statement, once for each connection, and binds what a use of it needs.
///
/// Identifiers go in the order of the table's first columns: a record's enclosing ones, then its own; fewer of them
/// mean all records that share those. A query whose statement cannot be prepared (its table is gone, or there is no
/// connection) is handed out all the same and fails when it is run, with the reason.
class QueryPreparer
{
public:
    enum class Verb {
        CreateTable,
        Clear,
        Add,
        AddOrUpdate,
        Get,
        GetByField,
        GetOfSome,
        IsExists,
        Delete,
        LookUp,  ///< Of the column that is named.
        Special, ///< A statement that one kind alone has.
    };

    /// What tells one kept statement from another: the verb, the name that it is for (by address), and a number where
    /// there are several of those.
    struct Key {
        Verb verb;
        const void *name = nullptr;
        std::size_t number = 0;
        bool operator==(const Key &) const = default;
    };

    /// Starts with a connection; the statements of an earlier one are finalized.
    void attach(sqlite3 *connection);

    /// Finalizes every statement, which must happen before the connection is closed.
    void detach() { attach(nullptr); }

    /// The statement under `key`, prepared from the text that `compose` gives if it is not there yet.
    template <class Compose>
    Query prepare(Key key, Compose &&compose)
    {
        Statement &statement = m_statements[key];
        if (!statement.isPrepared())
            statement.prepare(m_connection, compose());
        return Query(statement);
    }

    Query prepareBegin();
    Query prepareCommit();
    Query prepareRollback();

    Query prepareCreateSessionTable();
    Query prepareCreateVersionTable();
    Query prepareSetIp(std::u16string_view address);
    Query prepareGetIp();
    Query prepareSetDbVersion(std::u16string_view version);
    Query prepareGetDbVersion();

    template <class Record>
    Query prepareCreateTable()
    {
        return prepare({Verb::CreateTable, &Schema<Record>::table}, [] { return sql::createTable(tableOf<Record>()); });
    }

    template <class Record>
    Query prepareClear()
    {
        return prepare({Verb::Clear, &Schema<Record>::table}, [] { return sql::deleteFrom(Schema<Record>::table); });
    }

    /// An insert of so many records, to be filled with `bindRecord`. A stored row is replaced whole.
    template <class Record>
    Query prepareAdd(std::size_t records)
    {
        return prepare({Verb::Add, &Schema<Record>::table, records},
                       [records] { return sql::insertOrReplace(tableOf<Record>(), records); });
    }

    /// Binds a record's columns from a position on; returns the one behind them.
    template <class Record>
    static int bindRecord(Statement &statement, int position, const Record &record,
                          const std::array<quint32, parentCount<Record>> &parents)
    {
        std::size_t parent = 0;
        forEachColumn<Record>([&](const auto &row) {
            if constexpr (isParentKey<decltype(row)>)
                statement.bind(position++, parents.at(parent++));
            else
                bindField(statement, position++, row, record);
        });
        return position;
    }

    /// An insert that, where the row is already stored, changes only the columns of the fields that the record has.
    template <class Record, class... Parents>
    Query prepareAddOrUpdate(const Record &record, Parents... parents)
    {
        Query query =
            prepare({Verb::AddOrUpdate, &Schema<Record>::table}, [] { return sql::upsert(tableOf<Record>()); });
        const int maskPosition = bindRecord(*query, 1, record, {parents...});
        quint64 present = 0;
        unsigned int column = 0;
        forEachColumn<Record>([&](const auto &row) {
            if (isPresent(row, record))
                present |= 1ULL << column;
            ++column;
        });
        query->bind(maskPosition, present);
        return query;
    }

    template <class Record, class... Identifiers>
    Query prepareGet(Identifiers... identifiers)
    {
        Query query = prepare({Verb::Get, &Schema<Record>::table, sizeof...(identifiers)}, [] {
            return sql::select(SelectionBuilder::of<Record>()) +
                   sql::where(firstColumns<Record>(sizeof...(Identifiers)));
        });
        bindAll(*query, identifiers...);
        return query;
    }

    /// The value is compared as text, which the column's affinity turns into a number where the column holds numbers.
    template <class Record, class... Parents>
    Query prepareGetByField(const ModelField &field, std::u16string_view value, Parents... parents)
    {
        Query query = prepare({Verb::GetByField, &field, sizeof...(parents)}, [&] {
            std::vector<std::string> columns = firstColumns<Record>(sizeof...(Parents));
            columns.push_back(field.column());
            return sql::select(SelectionBuilder::of<Record>()) + sql::where(columns);
        });
        bindAll(*query, parents..., value);
        return query;
    }

    /// The records of which the first column is one of the identifiers, in the order of the primary key.
    template <class Record>
    Query prepareGetOfSome(const std::vector<quint32> &identifiers)
    {
        // A list costs a statement of its own to take apart.
        if (identifiers.size() == 1)
            return prepareGet<Record>(identifiers.front());
        Query query = prepare({Verb::GetOfSome, &Schema<Record>::table}, [] {
            return sql::select(SelectionBuilder::of<Record>()) +
                   sql::whereIsListed(TableModel<Record>::fields.front().column());
        });
        query->bindList(1, identifiers);
        return query;
    }

    template <class Record, class... Identifiers>
    Query prepareIsExists(Identifiers... identifiers)
    {
        Query query = prepare({Verb::IsExists, &Schema<Record>::table}, [] {
            const std::vector<std::string> columns = firstColumns<Record>(sizeof...(Identifiers));
            return sql::select({.table = Schema<Record>::table, .columns = columns, .joins = {}}) + sql::where(columns);
        });
        bindAll(*query, identifiers...);
        return query;
    }

    template <class Record, class... Identifiers>
    Query prepareDelete(Identifiers... identifiers)
    {
        Query query = prepare({Verb::Delete, &Schema<Record>::table, sizeof...(identifiers)}, [] {
            return sql::deleteFrom(Schema<Record>::table) + sql::where(firstColumns<Record>(sizeof...(Identifiers)));
        });
        bindAll(*query, identifiers...);
        return query;
    }

    template <class... Values>
    static void bindAll(Statement &statement, const Values &...values)
    {
        int position = 1;
        (statement.bind(position++, values), ...);
    }

    template <class Record>
    static std::vector<std::string> firstColumns(std::size_t count)
    {
        std::vector<std::string> columns;
        for (const ModelField &field : std::span(TableModel<Record>::fields).first(count))
            columns.push_back(field.column());
        return columns;
    }

private:
    struct KeyHash {
        std::size_t operator()(const Key &key) const
        {
            return std::hash<const void *>()(key.name) * 31 + static_cast<std::size_t>(key.verb) * 7 + key.number;
        }
    };

    /// A statement whose text is a literal, by which it is known.
    Query prepareText(const char *sql);

    template <class Row, class Record>
    static void bindField(Statement &statement, int position, const Row &row, const Record &record)
    {
        statement.bind(position, record.*row.member);
    }

    template <class Record, class Other, class Api, class ApiMember>
    static void bindField(Statement &statement, int position, const Reference<Record, Other, Api, ApiMember> &row,
                          const Record &record)
    {
        const std::optional<Other> &other = record.*row.member;
        statement.bind(position, other ? std::optional(other->id) : std::nullopt);
    }

    /// Identifiers are always there.
    template <class Row, class Record>
    static bool isPresent(const Row &row, const Record &record)
    {
        if constexpr (requires { (record.*row.member).has_value(); })
            return (record.*row.member).has_value();
        else
            return true;
    }

    sqlite3 *m_connection = nullptr;
    std::unordered_map<Key, Statement, KeyHash> m_statements;
};

} // namespace tarnelLib::controller
