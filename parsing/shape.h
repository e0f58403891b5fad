#pragma once

#include "parsing/requestparser.h"

#include <span>

namespace tarnelLib::controller {

/// What a record is in requests: its field list, for a reader that knows no types.
struct Shape {
    enum class Role { Value, Id, AlternativeId, Parent, DeletedId };

    struct Member {
        std::string_view key; ///< Empty for a field that requests do not have.
        Role role = Role::Value;
        bool isList = false;
        const Shape &(*object)() = nullptr; ///< Of a value, or an item of the list, that is a record.
        const char *expected = "an object";
        /// Reads a value that is no record, and says how it is stored.
        Reading (*read)(JsonReader &json, std::string &stored) = nullptr;

        [[nodiscard]] bool isRequired() const
        {
            return role == Role::Id || role == Role::Parent || role == Role::DeletedId;
        }
    };

    std::string_view kind;
    std::span<const Member> members;
};

template <class Record>
const Shape &shapeOf();

template <class Value>
Reading readAndShow(JsonReader &json, std::string &stored)
{
    Value value{};
    const Reading reading = readValue(json, value);
    if constexpr (std::is_same_v<Value, bool>)
        stored = value ? "true" : "false";
    else if constexpr (std::is_arithmetic_v<Value>)
        stored = std::to_string(value);
    return reading;
}

/// A member for what a record holds.
template <class Value>
struct MemberFor {
    static constexpr Shape::Member at(std::string_view key, Shape::Role role)
    {
        if constexpr (requires { Schema<Value>::fields; })
            return {.key = key, .role = role, .object = shapeOf<Value>};
        else
            return {.key = key, .role = role, .expected = "a number", .read = readAndShow<Value>};
    }
};
template <>
struct MemberFor<Text> {
    static constexpr Shape::Member at(std::string_view key, Shape::Role role)
    {
        return {.key = key, .role = role, .expected = "a string", .read = readAndShow<std::optional<Text>>};
    }
};
template <class Value>
struct MemberFor<std::optional<Value>> : MemberFor<Value> {
};
template <class Item>
struct MemberFor<std::vector<Item>> {
    static constexpr Shape::Member at(std::string_view key, Shape::Role role)
    {
        Shape::Member member = MemberFor<Item>::at(key, role);
        member.isList = true;
        return member;
    }
};

template <class Record>
constexpr auto membersOf()
{
    constexpr std::size_t fieldCount = std::tuple_size_v<std::remove_cvref_t<decltype(Schema<Record>::fields)>>;
    std::array<Shape::Member, fieldCount + 1> members{}; // The last one is what stands in for the identifier.
    std::size_t position = 0;
    forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (isParentKey<Row>)
            members[position] = MemberFor<quint32>::at(row.requestKey, Shape::Role::Parent);
        else if constexpr (requires { row.key; })
            members[position] = MemberFor<std::remove_cvref_t<decltype(std::declval<Record>().*row.member)>>::at(
                row.key, is<Row, Id> ? Shape::Role::Id : Shape::Role::Value);
        if constexpr (is<Row, Id>) {
            if (row.keys.alternativeKey != row.key)
                members.back() = MemberFor<quint32>::at(row.keys.alternativeKey, Shape::Role::AlternativeId);
        }
        ++position;
    });
    return members;
}

template <class Record>
const Shape &shapeOf()
{
    static constexpr auto members = membersOf<Record>();
    static constexpr Shape shape{Schema<Record>::table, members};
    return shape;
}

/// What a request to delete holds.
template <class Record>
constexpr auto deletedMembersOf()
{
    std::array<Shape::Member, parentCount<Record> + 1> members{};
    std::ranges::transform(identifierKeys<Record>(), members.begin(),
                           [](std::string_view key) { return MemberFor<quint32>::at(key, Shape::Role::DeletedId); });
    return members;
}

template <class Record>
const Shape &deletedShapeOf()
{
    static constexpr auto members = deletedMembersOf<Record>();
    static constexpr Shape shape{Schema<Record>::table, members};
    return shape;
}

} // namespace tarnelLib::controller
