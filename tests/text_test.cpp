#include "controller/storage/statement.h"

#include <gtest/gtest.h>

#include <random>

namespace tarnelLib::controller {

namespace {

/// A literal of a text that holds these bytes, whether they are characters or not.
std::string literal(std::string_view bytes)
{
    std::string hexadecimal;
    for (const char byte : bytes) {
        for (const int shift : {4, 0})
            hexadecimal += "0123456789abcdef"[static_cast<unsigned char>(byte) >> shift & 15];
    }
    return "CAST(x'" + hexadecimal + "' AS TEXT)";
}

/// The text as SQLite itself gives it in UTF-16.
std::u16string readBySqlite(sqlite3 *connection, const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    const auto *units = static_cast<const char16_t *>(sqlite3_column_text16(statement, 0));
    const std::u16string text(units, static_cast<std::size_t>(sqlite3_column_bytes16(statement, 0)) / 2);
    sqlite3_finalize(statement);
    return text;
}

} // namespace

TEST(Text, isReadAsSqliteReadsIt)
{
    using namespace std::string_view_literals;
    // Characters of all lengths, what is none, and what is cut off.
    constexpr std::string_view pieces[] = {
        "a",        "motion detector, hall", "\xd0\xb6", "\xe6\x9d\xb1", "\x7f"sv,       "\xf0\x9f\x98\x80",
        "\xc1\xbf", "\xe0\x80\x80",          "\xdf\xbf", "\xed\xa0\x80", "\xef\xbf\xbd", "\xef\xbf\xbe",
        "\0"sv,     "\xef\xbb\xbf",          "\xff",     "\x80",         "\xc3",         "\xe2\x82",
        "\xf0\x9f", "\xe0\xa0\x80"};
    for (const char *encoding : {"UTF-8", "UTF-16le"}) {
        sqlite3 *connection = nullptr;
        sqlite3_open(":memory:", &connection);
        sqlite3_exec(connection, ("PRAGMA encoding='" + std::string(encoding) + "'").c_str(), nullptr, nullptr,
                     nullptr);
        std::mt19937 random(1);
        for (int i = 0; i < 5000; ++i) {
            std::string bytes;
            for (auto left = random() % 5; left > 0; --left)
                bytes += pieces[random() % std::size(pieces)];
            const std::string sql = "SELECT " + literal(bytes);
            SCOPED_TRACE(sql);
            Statement statement;
            ASSERT_TRUE(statement.prepare(connection, sql));
            ASSERT_EQ(statement.step(), Statement::Step::Row);
            std::optional<Text> text;
            statement.read(0, text);
            ASSERT_TRUE(text.has_value());
            ASSERT_EQ(text->view(), readBySqlite(connection, sql));
        }
        sqlite3_close(connection);
    }
}

} // namespace tarnelLib::controller
