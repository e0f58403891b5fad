#include "storage/statement.h"

#include <QCoreApplication>
#include <QSqlError>
#include <QSqlQuery>

#include <sqlite3.h>

#include <limits>
#include <new>
#include <string>

namespace tarnelLib::controller {

Failure Failure::of(sqlite3 *connection, int code, const char *attempt)
{
    if (connection == nullptr)
        return {code, QSqlQuery().lastError().text()};
    const auto *message = static_cast<const char16_t *>(sqlite3_errmsg16(connection));
    return {code,
            QString::fromUtf16(message) + QLatin1Char(' ') + QCoreApplication::translate("QSQLiteResult", attempt)};
}

bool Failure::isOfContent(int code)
{
    switch (code & 0xff) {
    case SQLITE_ERROR: // A table or a column that is not there.
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return true;
    default:
        return false;
    }
}

Statement::~Statement()
{
    sqlite3_finalize(m_handle);
}

void Statement::prepare(sqlite3 *connection, const std::string &sql)
{
    const int code = sqlite3_prepare_v3(connection, sql.c_str(), static_cast<int>(sql.size() + 1),
                                        SQLITE_PREPARE_PERSISTENT, &m_handle, nullptr);
    if (code != SQLITE_OK)
        m_failure = Failure::of(connection, code, "Unable to execute statement");
}

void Statement::bindInteger(int position, qint64 value)
{
    keepBindError(sqlite3_bind_int64(m_handle, position, value));
}

void Statement::bind(int position, quint64 value)
{
    if (value <= std::numeric_limits<qint64>::max()) {
        bindInteger(position, static_cast<qint64>(value));
        return;
    }
    // Beyond SQLite's integers: as decimal text, of which the column's affinity makes the nearest floating-point
    // number.
    const std::string digits = std::to_string(value);
    keepBindError(
        sqlite3_bind_text(m_handle, position, digits.data(), static_cast<int>(digits.size()), SQLITE_TRANSIENT));
}

void Statement::bind(int position, double value)
{
    keepBindError(sqlite3_bind_double(m_handle, position, value));
}

void Statement::bind(int position, std::u16string_view value)
{
    // A view of nothing may have no address, which SQLite would take for NULL.
    const char16_t *units = value.empty() ? u"" : value.data();
    keepBindError(sqlite3_bind_text64(m_handle, position, reinterpret_cast<const char *>(units),
                                      value.size() * sizeof(char16_t), SQLITE_STATIC, SQLITE_UTF16));
}

void Statement::bindList(int position, std::span<const quint32> values)
{
    std::string json = "[";
    for (const quint32 value : values)
        json.append(json.size() > 1 ? "," : "").append(std::to_string(value));
    json.append("]");
    keepBindError(sqlite3_bind_text64(m_handle, position, json.data(), json.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

Statement::Step Statement::step()
{
    if (!isPrepared())
        return Step::Failed;
    if (m_bindError != SQLITE_OK) {
        m_failure = Failure::of(sqlite3_db_handle(m_handle), m_bindError, "Unable to bind parameters");
        return Step::Failed;
    }
    const int code = sqlite3_step(m_handle);
    if (code == SQLITE_ROW)
        return Step::Row;
    if (code == SQLITE_DONE)
        return Step::Done;
    m_failure = Failure::of(sqlite3_db_handle(m_handle), code, "Unable to fetch row");
    return Step::Failed;
}

std::optional<int> Statement::find(const char *name) const
{
    for (int column = 0; column < sqlite3_column_count(m_handle); ++column) {
        const char *found = sqlite3_column_name(m_handle, column);
        if (found == nullptr)
            throw std::bad_alloc(); // GCOVR_EXCL_LINE: it keeps names in UTF-8, and only copies them where they are
                                    // not.
        if (sqlite3_stricmp(found, name) == 0)
            return column;
    }
    return std::nullopt;
}

quint64 Statement::toUnsigned(sqlite3_value *held)
{
    if (sqlite3_value_type(held) != SQLITE_FLOAT)
        return static_cast<quint64>(sqlite3_value_int64(held));
    constexpr double beyond = 18446744073709551616.0; // 2^64
    const double number = sqlite3_value_double(held);
    if (number >= beyond)
        return std::numeric_limits<quint64>::max();
    return number > 0 ? static_cast<quint64>(number) : 0;
}

Text Statement::toText(sqlite3_value *held)
{
    // SQLite would convert to UTF-16 in a block of its own, out of which the text would be copied: for lists of devices
    // that takes 1.1 times as long. What is not quite regular is left to it.
    if (sqlite3_value_type(held) == SQLITE_TEXT && sqlite3_value_encoding(held) == SQLITE_UTF8) {
        const auto *bytes = static_cast<const char *>(sqlite3_value_blob(held));
        if (std::optional<Text> text = Text::fromUtf8({bytes, static_cast<std::size_t>(sqlite3_value_bytes(held))}))
            return std::move(*text);
    }
    const auto *units = static_cast<const char16_t *>(sqlite3_value_text16(held));
    if (units == nullptr)
        throw std::bad_alloc(); // GCOVR_EXCL_LINE: no memory for a text that is neither UTF-8 nor short.
    return Text({units, static_cast<std::size_t>(sqlite3_value_bytes16(held)) / sizeof(char16_t)});
}

void Statement::reset()
{
    m_bindError = SQLITE_OK;
    if (!isPrepared())
        return;
    sqlite3_reset(m_handle);
    sqlite3_clear_bindings(m_handle);
}

void Statement::keepBindError(int code)
{
    if (m_bindError == SQLITE_OK)
        m_bindError = code;
}

} // namespace tarnelLib::controller
