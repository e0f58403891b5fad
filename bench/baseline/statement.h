#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace bench {

/// A statement that is prepared once and kept.
class Statement
{
public:
    Statement(sqlite3 *connection, std::string_view sql)
    {
        sqlite3_prepare_v3(connection, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                           &m_statement, nullptr);
        if (m_statement == nullptr)
            throw std::runtime_error(sqlite3_errmsg(connection));
    }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement() { sqlite3_finalize(m_statement); }

    [[nodiscard]] sqlite3_stmt *handle() const { return m_statement; }

    void bind(int position, sqlite3_int64 value) { sqlite3_bind_int64(m_statement, position, value); }
    void bind(int position, double value) { sqlite3_bind_double(m_statement, position, value); }
    /// The text must live until the statement has been run. It is UTF-8.
    void bind(int position, std::string_view text)
    {
        sqlite3_bind_text64(m_statement, position, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    }
    void clearBindings() { sqlite3_clear_bindings(m_statement); }

    /// Whether there is a row.
    bool step()
    {
        const int code = sqlite3_step(m_statement);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(m_statement)));
        return code == SQLITE_ROW;
    }

    void reset() { sqlite3_reset(m_statement); }

    /// Runs a statement that has no rows.
    void run()
    {
        step();
        reset();
    }

    /// Calls `read` for each row.
    template <class Read>
    void forEachRow(Read read)
    {
        while (step())
            read(m_statement);
        reset();
    }

private:
    sqlite3_stmt *m_statement = nullptr;
};

} // namespace bench
