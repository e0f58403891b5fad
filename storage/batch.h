#pragma once

#include "storage/writeconnection.h"

namespace tarnelLib::controller {

/// A step that inserts records, many with one statement: with a statement for each, `addSites` takes 1.5 times as long.
/// After the first failure the others are passed over.
template <class Record>
class Batch
{
public:
    Batch(WriteConnection &writer, const char *message) : m_connection(writer)
    {
        // A table that is not there is a failure also where there is nothing to insert.
        const Query query = m_connection.prepareAdd<Record>(1);
        m_isGood = m_connection.enter(message, "execute batch error") &&
                   (query->isPrepared() || m_connection.fail(query->failure()));
    }

    /// The record must be there until the batch is finished.
    template <class... Parents>
    void add(const Record &record, Parents... parents)
    {
        m_rows[m_count++] = {&record, {parents...}};
        if (m_count == m_rows.size()) {
            insert(m_rows);
            m_count = 0;
        }
    }

    /// Inserts what is left; false if anything has failed.
    [[nodiscard]] bool finish()
    {
        for (const Row &row : std::span(m_rows).first(std::exchange(m_count, 0)))
            insert({&row, 1});
        return m_isGood;
    }

private:
    struct Row {
        const Record *record;
        ParentIds<Record> parents;
    };

    void insert(std::span<const Row> rows)
    {
        if (!m_isGood)
            return;
        const Query query = m_connection.prepareAdd<Record>(rows.size());
        int position = 1;
        for (const Row &row : rows)
            position = QueryPreparer::bindRecord(*query, position, *row.record, row.parents);
        m_isGood = m_connection.isDone(query->step(), *query);
    }

    WriteConnection &m_connection;
    std::array<Row, 16> m_rows;
    std::size_t m_count = 0;
    bool m_isGood = false;
};

/// Inserts records that stand in no other.
template <class Record>
[[nodiscard]] bool insertAll(WriteConnection &writer, std::span<const Record> records, const char *message)
{
    Batch<Record> inserts(writer, message);
    for (const Record &record : records)
        inserts.add(record);
    return inserts.finish();
}

} // namespace tarnelLib::controller
