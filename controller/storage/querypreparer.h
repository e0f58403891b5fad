#pragma once

#include "controller/storage/rowreader.h"

#include <unordered_map>

namespace tarnelLib::controller
{

/// A record's table as it is created.
template <class Record>
sql::Table tableOf()
{
    sql::Table table{.name = Schema<Record>::table, .columns = {}};
    std::size_t position = 0;
    forEachColumn<Record>([&](const auto &row) {
        table.columns.push_back({TableModel<Record>::fields[position++].column(), row.sqlType});
    });
    return table;
}

/// Prepares every statement, once for each connection, and binds what a use of it needs.
///
/// A query whose statement cannot be prepared (its table is gone, or there is no connection) is handed out all the same
/// and fails when it is run, with the reason.
class QueryPreparer
{
public:
    /// Starts with a connection; the statements of an earlier one are finalized.
    void attach(sqlite3 *connection);

    /// Finalizes every statement, which must happen before the connection is closed.
    void detach() { attach(nullptr); }

    Query prepareBegin()
    {
        return kept({Verb::Begin}, [] { return "BEGIN"; });
    }
    Query prepareCommit()
    {
        return kept({Verb::Commit}, [] { return "COMMIT"; });
    }
    Query prepareRollback()
    {
        return kept({Verb::Rollback}, [] { return "ROLLBACK"; });
    }

    template <class Record>
    Query prepareCreateTable()
    {
        return kept({Verb::CreateTable, &Schema<Record>::table}, [] { return sql::createTable(tableOf<Record>()); });
    }

    /// An insert that replaces a stored row whole; `bindRecord` fills it for each record.
    template <class Record>
    Query prepareAdd()
    {
        return kept({Verb::Add, &Schema<Record>::table}, [] { return sql::insertOrReplace(tableOf<Record>()); });
    }

    template <class Record>
    static void bindRecord(Statement &statement, const Record &record)
    {
        int position = 1;
        forEachColumn<Record>([&](const auto &row) { bindField(statement, position++, row, record); });
    }

    /// An insert that, where the row is already stored, changes only the columns of the fields that the record has.
    template <class Record>
    Query prepareAddOrUpdate(const Record &record)
    {
        Query query = kept({Verb::AddOrUpdate, &Schema<Record>::table}, [] { return sql::upsert(tableOf<Record>()); });
        bindRecord(*query, record);
        quint64 present = 0;
        int position = 0;
        forEachColumn<Record>([&](const auto &row) {
            if (isPresent(record.*row.member))
                present |= 1ULL << static_cast<unsigned>(position);
            ++position;
        });
        query->bind(position + 1, present);
        return query;
    }

    template <class Record>
    Query prepareGetAll()
    {
        return kept({Verb::GetAll, &Schema<Record>::table}, [] { return sql::select(SelectionBuilder::of<Record>()); });
    }

    template <class Record>
    Query prepareGet(quint32 id)
    {
        Query query = kept({Verb::Get, &Schema<Record>::table}, [] {
            return sql::select(SelectionBuilder::of<Record>()) + sql::where(identifierColumn<Record>());
        });
        query->bind(1, id);
        return query;
    }

    /// The value is compared as text, which the column's affinity turns into a number where the column holds numbers.
    template <class Record>
    Query prepareGetByField(const ModelField &field, std::u16string_view value)
    {
        Query query = kept({Verb::GetByField, &field},
                           [&] { return sql::select(SelectionBuilder::of<Record>()) + sql::where(field.column()); });
        query->bind(1, value);
        return query;
    }

    template <class Record>
    Query prepareDelete(quint32 id)
    {
        Query query = kept({Verb::Delete, &Schema<Record>::table}, [] {
            return sql::deleteFrom(Schema<Record>::table) + sql::where(identifierColumn<Record>());
        });
        query->bind(1, id);
        return query;
    }

    Query prepareCreateSessionTable();
    Query prepareCreateVersionTable();
    Query prepareSetDbVersion(std::u16string_view version);
    Query prepareGetDbVersion();
    Query prepareGetIp();

private:
    enum class Verb {
        Begin,
        Commit,
        Rollback,
        CreateTable,
        Add,
        AddOrUpdate,
        GetAll,
        Get,
        GetByField,
        Delete,
        CreateSessionTable,
        CreateVersionTable,
        SetDbVersion,
        GetDbVersion,
        GetIp,
    };

    /// What tells one kept statement from another: the verb and, by address, the name that it is for.
    struct Key {
        Verb verb;
        const void *name = nullptr;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key &key) const
        {
            return std::hash<const void *>()(key.name) * 31 + static_cast<std::size_t>(key.verb);
        }
    };

    /// The statement under `key`, prepared from the text that `compose` gives if it is not there yet.
    template <class Compose>
    Query kept(Key key, Compose &&compose)
    {
        Statement &statement = m_statements[key];
        if (!statement.isPrepared())
            statement.prepare(m_connection, compose());
        return Query(statement);
    }

    template <class Record>
    static std::string identifierColumn()
    {
        return TableModel<Record>::column(&Record::id).column();
    }

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

    static bool isPresent(quint32) { return true; }
    template <class Value>
    static bool isPresent(const std::optional<Value> &value)
    {
        return value.has_value();
    }

    sqlite3 *m_connection = nullptr;
    std::unordered_map<Key, Statement, KeyHash> m_statements;
};

} // namespace tarnelLib::controller
