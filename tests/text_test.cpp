#include "storage/statement.h"

#include <gtest/gtest.h>

#include <random>

namespace tarnelLib::controller {

TEST(Text, isReadAsSqliteReadsIt)
{
    // Characters of all lengths, what is none, and what is cut off: bytes in hexadecimal.
    constexpr const char *pieces[] = {"61",     "612068616c6c", "7f",       "00",     "d0b6",   "dfbf", "e0a080",
                                      "e69db1", "efbfbd",       "f09f9880", "efbfbe", "efbbbf", "c1bf", "e08080",
                                      "eda080", "ff",           "80",       "c3",     "e282",   "f09f", "e2"};
    sqlite3 *connection = nullptr;
    sqlite3_open(":memory:", &connection);
    std::mt19937 random(1);
    for (int i = 0; i < 5000; ++i) {
        std::string bytes;
        for (auto left = random() % 5; left > 0; --left)
            bytes += pieces[random() % std::size(pieces)];
        const std::string sql = "SELECT CAST(x'" + bytes + "' AS TEXT)";
        SCOPED_TRACE(sql);
        Statement statement;
        statement.prepare(connection, sql);
        ASSERT_EQ(statement.step(), Statement::Step::Row);
        const std::optional<Text> text = statement.readText(0);

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
