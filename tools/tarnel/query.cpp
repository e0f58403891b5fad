#include "tools/tarnel/query.h"

#include <QString>

namespace tool {

std::string utf8(const tarnelLib::controller::Text &text)
{
    const QByteArray bytes = QString::fromUtf16(text.view().data(), static_cast<int>(text.view().size())).toUtf8();
    return {bytes.data(), static_cast<std::size_t>(bytes.size())};
}

std::string utf8(const unsigned short *text)
{
    const QByteArray bytes = QString::fromUtf16(reinterpret_cast<const char16_t *>(text)).toUtf8();
    return {bytes.data(), static_cast<std::size_t>(bytes.size())};
}

std::optional<std::int64_t> number(tarnelLib::controller::Connection &connection, const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    sqlite3_prepare_v2(connection.connection(), sql.c_str(), -1, &statement, nullptr);
    std::optional<std::int64_t> found;
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL)
        found = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return found;
}

} // namespace tool
