#pragma once

#include "storage/connection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// A question to a cache that the library itself does not ask; it throws where it cannot be answered.
class Query
{
public:
    Query(tarnelLib::controller::Connection &connection, const std::string &sql,
          const std::vector<std::int64_t> &numbers = {});

    /// Moves to the next row; false behind the last one.
    [[nodiscard]] bool next();

    [[nodiscard]] const tarnelLib::controller::Statement &row() const { return m_statement; }

    // What stands in a column of the row, as it is stored.

    [[nodiscard]] bool isNull(int column) const { return m_statement.isNull(column); }
    [[nodiscard]] std::int64_t number(int column) const { return sqlite3_value_int64(m_statement.cell(column)); }
    [[nodiscard]] std::string_view bytes(int column) const;

private:
    tarnelLib::controller::Statement m_statement;
};

/// The number in the first column of the first row; nothing if there is none.
[[nodiscard]] std::optional<std::int64_t> number(tarnelLib::controller::Connection &connection, const std::string &sql);

} // namespace tool
