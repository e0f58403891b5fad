#include "tools/tarnel/query.h"

#include "tools/tarnel/command.h"

#include <fmt/format.h>

namespace tool {

namespace lib = tarnelLib::controller;

Query::Query(lib::Connection &connection, const std::string &sql, const std::vector<std::int64_t> &numbers)
{
    m_statement.prepare(connection.connection(), sql);
    int position = 1;
    for (const std::int64_t number : numbers)
        m_statement.bind(position++, number);
}

bool Query::next()
{
    const lib::Statement::Step step = m_statement.step();
    if (step == lib::Statement::Step::Failed)
        throw Obstacle(fmt::format("the file cannot be read: {}", m_statement.failure().text.toStdString()),
                       "`tarnel check` says what is wrong with it");
    return step == lib::Statement::Step::Row;
}

std::string_view Query::bytes(int column) const
{
    sqlite3_value *const held = m_statement.cell(column);
    const auto *const first = reinterpret_cast<const char *>(sqlite3_value_text(held));
    return first == nullptr ? std::string_view()
                            : std::string_view(first, static_cast<std::size_t>(sqlite3_value_bytes(held)));
}

std::optional<std::int64_t> number(lib::Connection &connection, const std::string &sql)
{
    Query query(connection, sql);
    return query.next() && !query.isNull(0) ? std::optional(query.number(0)) : std::nullopt;
}

} // namespace tool
