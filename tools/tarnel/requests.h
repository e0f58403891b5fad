#pragma once

#include "tools/tarnel/query.h"
#include "tools/tarnel/records.h"
#include "tools/tarnel/rows.h"

#include <functional>

namespace tool {

/// A value as a request has it; empty for NULL. What is stored comes out of a request as it went in: a text keeps what
/// is no character, and a number its fraction.
[[nodiscard]] std::string requestValue(sqlite3_value *held, bool isText);

/// Writes the stored rows of records as objects of requests, with all that is stored for them in other tables.
class RequestWriter
{
public:
    explicit RequestWriter(lib::Connection &connection) : m_connection(connection) {}

    enum class Parents { Left, Named };

    /// The object of the row on which a statement for `selectRows` stands; `Named` gives it the keys of what encloses
    /// it, for a request of its own.
    template <class Record>
    std::string object(const lib::Statement &row, Parents parents = Parents::Left)
    {
        std::string members;
        lib::Identifiers<Record> identifiers{};
        std::size_t identifier = 0;
        int column = 0;
        lib::forEachField<Record>([&]<class Row>(const Row &field) {
            if constexpr (lib::isParentKey<Row>) {
                row.read(column, identifiers.at(identifier++));
                if (parents == Parents::Named)
                    add(members, field.requestKey, requestValue(row.cell(column), false));
                ++column;
            } else if constexpr (lib::is<Row, lib::Id>) {
                row.read(column, identifiers.at(identifier));
                add(members, field.key, requestValue(row.cell(column++), false));
            } else if constexpr (lib::is<Row, lib::Column>) {
                using Text = std::optional<lib::Text> Record::*;
                add(members, field.key, requestValue(row.cell(column++), std::is_same_v<decltype(field.member), Text>));
            } else if constexpr (lib::is<Row, lib::Reference>) {
                if constexpr (requires { (Record{}.*field.member)->id; })
                    add(members, field.key, contact<typename Row::Nested>(row, column++));
                else
                    add(members, field.key, requestValue(row.cell(column++), false));
            } else if constexpr (lib::is<Row, lib::Attached>) {
                add(members, field.key, list<typename Row::Nested>(identifiers, ""));
            } else if constexpr (lib::is<Row, lib::Children>) {
                if constexpr (std::is_same_v<Record, lib::DeviceUser>)
                    add(members, field.key, sectionsOf(identifiers));
                else if constexpr (lib::parentCount<typename Row::Nested> == lib::parentCount<Record> + 1)
                    add(members, field.key, list<typename Row::Nested>(identifiers, "[]"));
            }
        });
        return fmt::format("{{{}}}", members);
    }

private:
    static void add(std::string &members, std::string_view key, const std::string &value)
    {
        if (!key.empty() && !value.empty())
            members += fmt::format("{}\"{}\":{}", members.empty() ? "" : ",", key, value);
    }

    /// A statement about the rows that share identifiers.
    template <class Record>
    lib::Query prepare(lib::Numbers identifiers)
    {
        return m_connection.prepareFor<Record>(identifiers, [] { return selectRows<Record>(); });
    }

    /// The objects of the rows that share identifiers, in brackets; empty if there are none.
    template <class Record>
    std::string list(lib::Numbers identifiers, std::string_view brackets)
    {
        std::string items;
        const lib::Query query = prepare<Record>(identifiers);
        while (query->step() == lib::Statement::Step::Row)
            items += (items.empty() ? "" : ",") + object<Record>(*query);
        if (items.empty() || brackets.empty())
            return items;
        return fmt::format("{}{}{}", brackets.front(), items, brackets.back());
    }

    /// The record that a row names by a column; its identifier alone, if it is not stored.
    template <class Record>
    std::string contact(const lib::Statement &row, int column)
    {
        if (row.isNull(column))
            return {};
        quint32 id = 0;
        row.read(column, id);
        const std::string stored = list<Record>({&id, 1}, "");
        return stored.empty() ? fmt::format("{{\"id\":{}}}", id) : stored;
    }

    std::string sectionsOf(lib::Numbers deviceUser)
    {
        std::string sections;
        const lib::Query query = prepare<lib::DeviceUserSectionLink>(deviceUser);
        while (query->step() == lib::Statement::Step::Row)
            sections += (sections.empty() ? "" : ",") + requestValue(query->cell(2), false);
        return sections.empty() ? sections : fmt::format("[{}]", sections);
    }

    lib::Connection &m_connection;
};

} // namespace tool
