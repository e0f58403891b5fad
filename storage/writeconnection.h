#pragma once

#include "storage/connection.h"
#include "storage/readmark.h"

#include <functional>

namespace tarnelLib::controller {

/// The connection that writes, with the steps that writes are made of. It reads as well: what a call that may write
/// reads, it reads here.
class WriteConnection : public Connection
{
public:
    /// `onLogGrew` is called when something was written that is not yet in the main file, and not again until
    /// `foldLog`.
    WriteConnection(std::function<void()> onLogGrew, ReadMark &mark) : m_mark(mark), m_onLogGrew(std::move(onLogGrew))
    {
    }

    /// Starts with an open connection of SQLite's.
    void attach(sqlite3 *connection);

    /// There may be something in the log that is not yet in the main file.
    void noteUnfoldedLog();

    /// Brings what was written into the main file, so that it is complete without side files; false if a read
    /// in progress keeps it off.
    [[nodiscard]] bool foldLog();

    /// Carries out the steps in one transaction: kept if all of them succeed, undone otherwise.
    template <class Steps>
    [[nodiscard]] bool inTransaction(Steps &&steps)
    {
        const bool isKept = Connection::inTransaction(For::Writing, steps);
        if (isKept && m_logPages > 0)
            noteLog();
        return isKept;
    }

    /// Runs a statement that yields no rows.
    [[nodiscard]] bool run(Query &&query, const char *message);

    /// Deletes the records that share the identifiers: without any, all records.
    template <class Record>
    [[nodiscard]] bool remove(Numbers identifiers, const char *message)
    {
        return run(prepareFor<Record>(identifiers, [] { return sql::deleteFrom(Schema<Record>::table); }), message);
    }

    /// Inserts one record, in place of a stored one.
    template <class Record>
    [[nodiscard]] bool replace(const Record &record, const char *message)
    {
        Query query = prepareAdd<Record>(1);
        QueryPreparer::bindRecord(*query, 1, record, {});
        return run(std::move(query), message);
    }

private:
    void noteLog();
    int checkpoint(int mode, int timeoutMs);

    ReadMark &m_mark; ///< Would keep the log from being copied.
    std::function<void()> m_onLogGrew;
    int m_logPages = 0; ///< Since the log was last looked at.
    bool m_isLogUnfolded = false;
};

} // namespace tarnelLib::controller
