#pragma once

#include "entities/text.h"

#include <QString>

#include <sqlite3.h>

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tarnelLib::controller {

/// The text that Qt's SQLite driver gives for the connection's last error, or for the lack of a connection; `attempt`
/// is the driver's word for what was tried.
QString driverErrorText(sqlite3 *connection, const char *attempt);

/// One prepared statement of the connection: bound by position, stepped through, and used again.
///
/// A failure to prepare or to bind shows at the next step, so that a caller has one place to look.
/// Texts are bound without a copy and must live until the statement is reset.
class Statement
{
public:
    Statement() = default;
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement();

    /// Prepares the statement to be kept; false leaves the reason in `errorText`.
    bool prepare(sqlite3 *connection, const std::string &sql);
    [[nodiscard]] bool isPrepared() const { return m_handle != nullptr; }

    void bind(int position, quint32 value);
    void bind(int position, qint32 value);
    void bind(int position, quint8 value);
    void bind(int position, bool value);
    void bind(int position, qint64 value);
    void bind(int position, quint64 value);
    void bind(int position, double value);
    void bind(int position, std::u16string_view value);
    void bind(int position, const Text &value) { bind(position, value.view()); }
    /// Binds numbers as one value, a JSON array.
    void bindList(int position, const std::vector<quint32> &values);
    /// What is absent needs no binding: a reset leaves every parameter NULL.
    template <class Value>
    void bind(int position, const std::optional<Value> &value)
    {
        if (value)
            bind(position, *value);
    }

    enum class Step { Row, Done, Failed };
    [[nodiscard]] Step step();

    /// The result code and the text of the step that failed.
    [[nodiscard]] int errorCode() const { return m_errorCode; }
    [[nodiscard]] const QString &errorText() const { return m_errorText; }

    /// The column of a name, of whatever columns the table has.
    [[nodiscard]] std::optional<int> find(const char *name) const;
    [[nodiscard]] bool isNull(int column) const { return sqlite3_value_type(cell(column)) == SQLITE_NULL; }
    template <class Value>
    void read(int column, Value &value) const
    {
        value = toNumber<Value>(cell(column));
    }
    template <class Value>
    void read(int column, std::optional<Value> &value) const
    {
        sqlite3_value *const held = cell(column);
        if (sqlite3_value_type(held) == SQLITE_NULL)
            return;
        if constexpr (std::is_same_v<Value, Text>)
            value = toText(held);
        else
            value = toNumber<Value>(held);
    }

    /// Ends a use of the statement: closes its cursor, which is a lock on the file, and lets go of what was bound.
    void reset();

private:
    /// The value in a column, fetched once for all that is asked of it. That needs no more protection than the
    /// connection, which one thread at a time uses.
    [[nodiscard]] sqlite3_value *cell(int column) const { return sqlite3_column_value(m_handle, column); }

    template <class Value>
    static Value toNumber(sqlite3_value *held)
    {
        if constexpr (std::is_same_v<Value, double>)
            return sqlite3_value_double(held);
        else if constexpr (std::is_same_v<Value, quint64>)
            return toUnsigned(held);
        else if constexpr (std::is_same_v<Value, bool>)
            return sqlite3_value_int64(held) != 0;
        else
            return static_cast<Value>(sqlite3_value_int64(held));
    }
    static quint64 toUnsigned(sqlite3_value *held);
    static Text toText(sqlite3_value *held);

    void keepBindError(int code);
    void keepError(int code, const char *attempt);

    sqlite3_stmt *m_handle = nullptr;
    sqlite3 *m_connection = nullptr;
    int m_bindError = 0;
    int m_errorCode = 0;
    QString m_errorText;
};

/// One use of a kept statement, which is reset when the use ends.
class Query
{
public:
    explicit Query(Statement &statement) : m_statement(&statement) {}
    Query(Query &&other) noexcept : m_statement(std::exchange(other.m_statement, nullptr)) {}
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;
    Query &operator=(Query &&) = delete;
    ~Query()
    {
        if (m_statement != nullptr)
            m_statement->reset();
    }

    Statement *operator->() const { return m_statement; }
    Statement &operator*() const { return *m_statement; }

private:
    Statement *m_statement;
};

} // namespace tarnelLib::controller
