#pragma once

#include "entities/structures.h"

#include <QString>

#include <sqlite3.h>

#include <concepts>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace tarnelLib::controller {

/// Why something failed: SQLite's result code, and the reason as Qt's SQLite driver gives it.
struct Failure {
    int code = SQLITE_OK;
    QString text;

    /// Of the connection's last error, or of the lack of a connection; `attempt` is the driver's word for what was
    /// tried.
    static Failure of(sqlite3 *connection, int code, const char *attempt);

    /// True if the content of the file is the reason. Every other failure says nothing about the file.
    static bool isOfContent(int code);
};

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

    /// Prepares the statement to be kept. A failure is that of the next step.
    void prepare(sqlite3 *connection, const std::string &sql);
    [[nodiscard]] bool isPrepared() const { return m_handle != nullptr; }

    template <std::integral Value>
    void bind(int position, Value value)
    {
        bindInteger(position, static_cast<qint64>(value));
    }
    void bind(int position, quint64 value);
    void bind(int position, double value);
    void bind(int position, std::u16string_view value);
    void bind(int position, const Text &value) { bind(position, value.view()); }
    /// Binds numbers as one value, a JSON array.
    void bindList(int position, std::span<const quint32> values);
    /// What is absent needs no binding: a reset leaves every parameter NULL.
    template <class Value>
    void bind(int position, const std::optional<Value> &value)
    {
        if (value)
            bind(position, *value);
    }

    /// Binds values to the first parameters.
    template <class... Values>
    void bindAll(const Values &...values)
    {
        int position = 1;
        (bind(position++, values), ...);
    }
    void bindNumbers(std::span<const quint32> values)
    {
        for (std::size_t i = 0; i < values.size(); ++i)
            bind(static_cast<int>(i) + 1, values[i]);
    }

    enum class Step { Row, Done, Failed };
    [[nodiscard]] Step step();

    /// The failure of the step that failed last.
    [[nodiscard]] const Failure &failure() const { return m_failure; }

    /// The value in a column, fetched once for all that is asked of it. That needs no more protection than the
    /// connection, which one thread at a time uses.
    [[nodiscard]] sqlite3_value *cell(int column) const { return sqlite3_column_value(m_handle, column); }

    [[nodiscard]] bool isNull(int column) const { return sqlite3_value_type(cell(column)) == SQLITE_NULL; }
    void read(int column, quint32 &value) const { value = toNumber<quint32>(cell(column)); }
    /// Into an optional member of a structure, which stays null for NULL.
    template <class Value>
    void read(int column, Value *&member) const
    {
        sqlite3_value *const held = cell(column);
        if (sqlite3_value_type(held) == SQLITE_NULL)
            return;
        if constexpr (std::is_same_v<Value, unsigned short>)
            member = toText(held).release();
        else
            member = allocate(toNumber<Value>(held));
    }
    /// Null for NULL.
    [[nodiscard]] std::optional<Text> readText(int column) const
    {
        return isNull(column) ? std::nullopt : std::optional(toText(cell(column)));
    }

    /// The position of the column with a name, if there is one.
    [[nodiscard]] std::optional<int> find(const char *name) const;

    /// Ends a use of the statement: closes its cursor, which is a lock on the file, and lets go of what was bound.
    void reset();

private:
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

    void bindInteger(int position, qint64 value);
    void keepBindError(int code);

    sqlite3_stmt *m_handle = nullptr;
    int m_bindError = 0;
    Failure m_failure;
};

struct ResetStatement {
    void operator()(Statement *statement) const { statement->reset(); }
};

/// One use of a kept statement, which is reset when the use ends.
using Query = std::unique_ptr<Statement, ResetStatement>;

} // namespace tarnelLib::controller
