#pragma once

#include "entities/structures.h"
#include "storage/tables.h"
#include "tools/tarnel/output.h"

#include <tarnel/kinds.hpp>
#include <tarnel/text.hpp>

#include <cctype>

/// The kinds of record as people and programs read them, from the library's lists of fields.
namespace tool {

namespace lib = tarnelLib::controller;
using output::Json;

/// What a kind is called: `User`, for the table Users.
template <class Record>
constexpr std::string_view kindName = lib::Schema<Record>::table.substr(0, lib::Schema<Record>::table.size() - 1);

/// Calls `visit` with each kind: `[]<class Record>(const lib::KindTable<Record> &) {}`.
template <class Visitor>
void forEachKind(Visitor &&visit)
{
    std::apply([&](const auto &...table) { (visit(table), ...); }, lib::tables);
}

/// A name as the names of members have it: `device_user` for DeviceUser.
inline std::string lowered(std::string_view name)
{
    std::string text;
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isupper(byte) != 0 && !text.empty())
            text += '_';
        text += static_cast<char>(std::tolower(byte));
    }
    return text;
}

/// The key of a member of another record that is borrowed: `section_name`.
template <class Other, class Value>
std::string borrowedKey(std::optional<Value> Other::*source)
{
    std::string key;
    lib::forEachColumn<Other>([&](const auto &row) {
        if constexpr (requires { row.member == source; }) {
            if (row.member == source)
                key = fmt::format("{}_{}", lowered(kindName<Other>), row.key);
        }
    });
    return key;
}

/// The value of a member as requests have it: flags are 1 and 0.
template <class Value>
Json toJson(const Value *member)
{
    if constexpr (std::is_same_v<Value, unsigned short>)
        return tarnel::utf8(member);
    else if constexpr (std::is_same_v<Value, bool>)
        return *member ? 1 : 0;
    else
        return *member;
}

/// What a client is handed out, under the keys of requests, without what is absent. Records that are joined and that
/// requests name by an identifier stand beside it, under the name of their kind: `"domain": 11, "Domain": {...}`.
template <class Record>
Json toJson(const lib::ApiOf<Record> &structure)
{
    Json json = Json::object();
    lib::forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (lib::is<Row, lib::Id>) {
            if (!row.key.empty()) // Else it is that of the record around it.
                json[std::string(row.key)] = structure.*row.apiMember;
        } else if constexpr (lib::is<Row, lib::Column>) {
            if (structure.*row.apiMember != nullptr)
                json[std::string(row.key)] = toJson(structure.*row.apiMember);
        } else if constexpr (lib::is<Row, lib::Borrowed>) {
            if (structure.*row.apiMember != nullptr)
                json[borrowedKey(row.source)] = toJson(structure.*row.apiMember);
        } else if constexpr (lib::isJoined<Row>) {
            using Other = typename Row::Nested;
            if (structure.*row.apiMember == nullptr)
                return;
            Json other = toJson<Other>(*(structure.*row.apiMember));
            if constexpr (requires { (Record{}.*row.member)->id; }) { // A request gives all of it.
                json[std::string(row.key)] = std::move(other);
            } else {
                if constexpr (lib::is<Row, lib::Reference>)
                    json[std::string(row.key)] = other.front();
                json[std::string(kindName<Other>)] = std::move(other);
            }
        } else if constexpr (lib::is<Row, lib::Children>) {
            if (structure.*row.apiCount == 0)
                return;
            Json &items = json[std::string(row.key)] = Json::array();
            for (const auto &item : std::span(structure.*row.apiMember, structure.*row.apiCount)) {
                if constexpr (std::is_arithmetic_v<typename Row::Nested>)
                    items.push_back(item);
                else
                    items.push_back(toJson<typename Row::Nested>(item));
            }
        }
    });
    return json;
}

} // namespace tool
