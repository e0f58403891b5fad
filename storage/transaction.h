#pragma once

#include "storage/querypreparer.h"

namespace tarnelLib::controller {

/// A transaction that begins with the first step in it, and is undone unless it is committed.
class Transaction
{
public:
    enum class For { Reading, Writing };

    Transaction(QueryPreparer &preparer, For purpose) : m_preparer(preparer), m_purpose(purpose) {}
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    ~Transaction();

    // False with the reason in `failure`.

    /// Begins, unless it has begun.
    [[nodiscard]] bool begin();
    [[nodiscard]] bool commit();

    [[nodiscard]] const Failure &failure() const { return m_failure; }

private:
    bool execute(const char *sql);

    QueryPreparer &m_preparer;
    For m_purpose;
    bool m_isOpen = false;
    Failure m_failure;
};

} // namespace tarnelLib::controller
