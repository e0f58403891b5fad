#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

/// The database file behind the library's back: a second SQLite client, as a support engineer's tool is one.
namespace client {

/// A connection of its own to a database file. What it has begun ends with it.
class Connection
{
public:
    explicit Connection(const char *path = "CacheDb", int flags = 0)
    {
        if (sqlite3_open_v2(path, &m_connection, SQLITE_OPEN_READWRITE | flags, nullptr) != SQLITE_OK)
            throw std::runtime_error(path);
        sqlite3_busy_timeout(m_connection, 2000); // The cache may be folding its log.
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() { sqlite3_close(m_connection); }

    /// Runs statements; the rows come out as lines of columns with "|" between them.
    std::string ask(const std::string &statements)
    {
        std::string rows;
        const auto keepRow = [](void *kept, int count, char **columns, char **) {
            auto &lines = *static_cast<std::string *>(kept);
            for (int i = 0; i < count; ++i)
                lines.append(i == 0 ? "" : "|").append(columns[i] == nullptr ? "NULL" : columns[i]);
            lines += '\n';
            return 0;
        };
        if (sqlite3_exec(m_connection, statements.c_str(), keepRow, &rows, nullptr) != SQLITE_OK)
            throw std::runtime_error(statements + ": " + sqlite3_errmsg(m_connection));
        return rows;
    }

private:
    sqlite3 *m_connection = nullptr;
};

inline std::string ask(const std::string &statements, const char *path = "CacheDb")
{
    return Connection(path).ask(statements);
}

/// All that the file holds.
inline std::string content()
{
    Connection file;
    return file.ask(
        file.ask("SELECT 'SELECT ''' || name || ''', * FROM ' || name || ';' FROM sqlite_master WHERE type = 'table'"));
}

} // namespace client
