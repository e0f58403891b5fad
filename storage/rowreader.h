#pragma once

#include "storage/selection.h"
#include "storage/statement.h"

namespace tarnelLib::controller {

/// Reads the record in the row on which a statement stands into a structure, of which every member is null.
class RowReader
{
public:
    template <class Record>
    static void read(const Statement &row, ApiOf<Record> &structure)
    {
        RowReader(row).readRecord<Record>(structure);
    }

private:
    explicit RowReader(const Statement &row) : m_row(row) {}

    template <class Record>
    void readRecord(ApiOf<Record> &structure)
    {
        forEachField<Record>([&]<class Row>(const Row &row) {
            if constexpr (isParentKey<Row>)
                ++m_column; // For those who put lists of several parents together.
            else if constexpr (isJoined<Row>)
                readNested<typename Row::Nested>(structure.*row.apiMember);
            else if constexpr (isStored<Row> || is<Row, Borrowed>)
                m_row.read(m_column++, structure.*row.apiMember);
        });
    }

    /// A nested record starts with its identifier, and is absent where that is NULL.
    template <class Other>
    void readNested(ApiOf<Other> *&structure)
    {
        static const int columns = static_cast<int>(SelectionBuilder::of<Other>().columns.size());
        if (m_row.isNull(m_column))
            m_column += columns;
        else
            readRecord<Other>(*(structure = allocate(ApiOf<Other>{})));
    }

    const Statement &m_row;
    int m_column = 0;
};

} // namespace tarnelLib::controller
