#pragma once

#include "bench/baseline/statement.h"

#include <simdjson.h>

#include <memory>
#include <span>

namespace bench {

/// Reads requests with simdjson, which needs them in UTF-8; parser and buffer are kept from call to call.
class RequestReader
{
public:
    /// The elements of `{"D":{"items":[...]}}`. Like all that is read from it, they last until the next request.
    simdjson::ondemand::array items(std::u16string_view request);
    /// The record of `{"D":{...}}`.
    simdjson::ondemand::object record(std::u16string_view request);

private:
    void parse(std::u16string_view request);

    simdjson::ondemand::parser m_parser;
    simdjson::ondemand::document m_document;
    // NOLINTNEXTLINE(modernize-avoid-c-arrays): the classes for it would fill it with zeroes first.
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
};

/// A key, and the position in a statement at which its value is bound.
struct Member {
    std::string_view key;
    int position;
};

/// Stands for members that are not bound but left to the caller.
constexpr int nested = 0;

/// Binds the members of an object, and NULL for those that it does not have; calls `read` with the key and the value of
/// each nested one. Returns what was bound at the first position.
template <class Read>
sqlite3_int64 bindMembers(simdjson::ondemand::object object, Statement &statement, std::span<const Member> members,
                          Read read)
{
    statement.clearBindings();
    sqlite3_int64 first = 0;
    std::size_t next = 0;
    for (auto field : object) {
        // Members mostly come in the order of the table.
        const simdjson::ondemand::raw_json_string key = field.key();
        std::size_t tried = 0;
        for (; tried < members.size() && !key.unsafe_is_equal(members[next].key); ++tried)
            next = next + 1 < members.size() ? next + 1 : 0;
        if (tried == members.size())
            continue;
        const Member &member = members[next];
        simdjson::ondemand::value value = field.value();
        if (member.position == nested) {
            read(member.key, value);
        } else if (value.type() == simdjson::ondemand::json_type::string) {
            statement.bind(member.position, std::string_view(value.get_string()));
        } else {
            const sqlite3_int64 number = value.get_int64();
            if (member.position == 1)
                first = number;
            statement.bind(member.position, number);
        }
    }
    return first;
}

inline sqlite3_int64 bindMembers(simdjson::ondemand::object object, Statement &statement,
                                 std::span<const Member> members)
{
    return bindMembers(object, statement, members, [](std::string_view, const simdjson::ondemand::value &) {});
}

} // namespace bench
