#pragma once

#include <sqlite3.h>

#include <functional>
#include <stdexcept>
#include <string>

/// The database file behind the library's back: a second SQLite client, as a support engineer's tool is one.
namespace client {

/// Runs statements on a database file over a connection of their own; the rows come out as lines of columns with "|"
/// between them.
inline std::string ask(const std::string &statements, const char *path = "CacheDb")
{
    sqlite3 *connection = nullptr;
    std::string rows;
    const auto keepRow = [](void *kept, int count, char **columns, char **) {
        auto &lines = *static_cast<std::string *>(kept);
        for (int i = 0; i < count; ++i)
            lines.append(i == 0 ? "" : "|").append(columns[i] == nullptr ? "NULL" : columns[i]);
        lines += '\n';
        return 0;
    };
    int code = sqlite3_open_v2(path, &connection, SQLITE_OPEN_READWRITE, nullptr);
    if (code == SQLITE_OK)
        code = sqlite3_exec(connection, statements.c_str(), keepRow, &rows, nullptr);
    const std::string reason = sqlite3_errmsg(connection);
    sqlite3_close(connection);
    if (code != SQLITE_OK)
        throw std::runtime_error(statements + ": " + reason);
    return rows;
}

} // namespace client
