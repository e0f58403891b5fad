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
        sqlite3_busy_timeout(m_connection, 5000); // The library may be folding its log.
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

    /// Makes a copy with SQLite's backup, at one go.
    void copyTo(Connection &copy) const
    {
        sqlite3_backup *const backup = sqlite3_backup_init(copy.m_connection, "main", m_connection, "main");
        const int code = sqlite3_backup_step(backup, -1);
        sqlite3_backup_finish(backup);
        if (code != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errstr(code));
    }

private:
    sqlite3 *m_connection = nullptr;
};

inline std::string ask(const std::string &statements, const char *path = "CacheDb")
{
    return Connection(path).ask(statements);
}

/// All that the file holds.
inline std::string content(const char *path = "CacheDb")
{
    Connection file(path);
    return file.ask(
        file.ask("SELECT 'SELECT ''' || name || ''', * FROM ' || name || ';' FROM sqlite_master WHERE type = 'table'"));
}

} // namespace client
