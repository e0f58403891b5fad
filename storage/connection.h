#pragma once

#include "storage/querypreparer.h"

#include <QScopeGuard>

namespace tarnelLib::controller {

/// How long a connection waits for a lock: as long as Qt's driver does.
constexpr int busyTimeoutMs = 5000;

/// A connection to the file, for one call at a time: its kept statements, and the steps that reads are made of. A step
/// that fails has logged the reason with its message, and returns false.
class Connection : public QueryPreparer
{
public:
    Connection() = default;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close_v2(m_own); }

    /// Opens a read-only connection to a file that another connection holds open; returns SQLite's result code.
    [[nodiscard]] int openForReading(const char *path);

    /// Carries out reads of which all see one state of the file.
    template <class Steps>
    [[nodiscard]] bool inSnapshot(Steps &&steps)
    {
        return inTransaction(For::Reading, steps);
    }

    /// Calls `visit` with each row.
    template <class Visitor>
    [[nodiscard]] bool readEach(Query &&query, const char *message, Visitor &&visit)
    {
        const Query use = std::move(query);
        if (!enter(message))
            return false;
        Statement::Step step = use->step();
        for (; step == Statement::Step::Row; step = use->step())
            visit(*use);
        return isDone(step, *use);
    }

    /// Calls `visit` with the first row, if there is one.
    template <class Visitor>
    [[nodiscard]] bool readFirst(Query &&query, const char *message, Visitor &&visit)
    {
        const Query use = std::move(query);
        if (!enter(message))
            return false;
        const Statement::Step step = use->step();
        if (step != Statement::Step::Row)
            return isDone(step, *use);
        visit(*use);
        return true;
    }

    template <class Record>
    [[nodiscard]] bool readAll(Query &&query, Structures<Record> &found, const char *message)
    {
        return readEach(std::move(query), message,
                        [&](const Statement &row) { readRecord<Record>(row, found.append()); });
    }

    /// Finds nothing if there is no row.
    template <class Record>
    [[nodiscard]] bool readOne(Query &&query, Structures<Record> &found, const char *message)
    {
        return readFirst(std::move(query), message,
                         [&](const Statement &row) { readRecord<Record>(row, found.append()); });
    }

    [[nodiscard]] bool readExists(Query &&query, bool &isExists, const char *message)
    {
        isExists = false;
        return readFirst(std::move(query), message, [&](const Statement &) { isExists = true; });
    }

    /// Begins a step, and with the first one the transaction around it. The message and the kind of step are what a
    /// failure is logged with; without a message it is the kind alone.
    [[nodiscard]] bool enter(const char *message, const char *kind = "execute error");

    /// Whether the statement of the step has ended well.
    [[nodiscard]] bool isDone(Statement::Step step, const Statement &statement);

    /// Logs a failure of the step, and returns false.
    bool fail(const Failure &failure);

    /// Whether a step has failed for a reason that says nothing about the content of the file.
    [[nodiscard]] bool hasMetCircumstance() const { return m_hasMetCircumstance; }

protected:
    /// Sets what every connection needs: how long it waits for a lock, and how much of the file it keeps in memory.
    void configure();

    enum class For { Reading, Writing };

    /// Carries out steps in a transaction, which begins with the first of them and is undone unless all succeed. Steps
    /// within steps belong to the transaction around them.
    template <class Steps>
    [[nodiscard]] bool inTransaction(For purpose, Steps &&steps)
    {
        if (m_purpose)
            return steps();
        m_purpose = purpose;
        const auto end = qScopeGuard([this] { endTransaction(); });
        return steps() && commit();
    }

private:
    bool begin();
    bool commit();
    void endTransaction();
    bool execute(const char *sql);

    sqlite3 *m_own = nullptr;     ///< Goes when the last of its statements has gone.
    std::optional<For> m_purpose; ///< Of the transaction that the next step belongs to.
    bool m_hasBegun = false;
    const char *m_message = nullptr;
    const char *m_kind = nullptr;
    bool m_hasMetCircumstance = false;
};

} // namespace tarnelLib::controller
