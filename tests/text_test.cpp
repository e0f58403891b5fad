#include "controller/storage/statement.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <random>

namespace tarnelLib::controller {

TEST(Text, isReadAsSqliteReadsIt)
{
    using namespace std::string_view_literals;
    // Characters of all lengths, what is none, and what is cut off.
    constexpr std::string_view pieces[] = {"a",
                                           "motion detector, hall",
                                           "\xd0\xb6",
                                           "\xe6\x9d\xb1",
                                           "\x7f",
                                           "\xf0\x9f\x98\x80",
                                           "\xc1\xbf",
                                           "\xe0\x80\x80",
                                           "\xdf\xbf",
                                           "\xed\xa0\x80",
                                           "\xef\xbf\xbd",
                                           "\xef\xbf\xbe",
                                           "\0"sv,
                                           "\xef\xbb\xbf",
                                           "\xff",
                                           "\x80",
                                           "\xe0\xa0\x80",
                                           "\xe2\x82",
                                           "\xf0\x9f",
                                           "\xc3"};
    sqlite3 *connection = nullptr;
    sqlite3_open(":memory:", &connection);
    std::mt19937 random(1);
    for (int i = 0; i < 5000; ++i) {
        QByteArray bytes;
        for (auto left = random() % 5; left > 0; --left) {
            const std::string_view piece = pieces[random() % std::size(pieces)];
            bytes.append(piece.data(), static_cast<int>(piece.size()));
        }
        const std::string sql = "SELECT CAST(x'" + bytes.toHex().toStdString() + "' AS TEXT)";
        SCOPED_TRACE(sql);
        Statement statement;
        ASSERT_TRUE(statement.prepare(connection, sql));
        ASSERT_EQ(statement.step(), Statement::Step::Row);
        std::optional<Text> text;
        statement.read(0, text);

        sqlite3_stmt *other = nullptr;
        sqlite3_prepare_v2(connection, sql.c_str(), -1, &other, nullptr);
        ASSERT_EQ(sqlite3_step(other), SQLITE_ROW);
        const auto *units = static_cast<const char16_t *>(sqlite3_column_text16(other, 0));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(other, 0)) / 2;
        EXPECT_EQ(text.value().view(), std::u16string_view(units, size));
        sqlite3_finalize(other);
    }
    sqlite3_close(connection);
}

} // namespace tarnelLib::controller
