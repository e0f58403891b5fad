#pragma once

#include "controller/entities/text.h"

#include <QtGlobal>

#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>

/// The kinds of row that a record's list of fields is made of.
///
/// The list is the only place where a field is written down: table, statements, reading of rows and requests, filters,
/// conversion to the C structure and release are loops over it. A row names the field as the column does (the column is
/// the table's name followed by it), then the JSON key, the record's member and the C structure's member.
namespace tarnelLib::controller
{

/// The field list of a record type, specialised beside the record:
/// `Api` (the C structure), `table` (its name) and `fields` (a tuple of the rows below, in the record's order).
template <class Record>
struct Schema;

template <class Record>
using ApiOf = typename Schema<Record>::Api;

/// What the pointer of an optional member of the C structure points to.
template <class Value>
struct ApiValue {
    using Type = Value;
};
template <>
struct ApiValue<Text> {
    using Type = unsigned short;
};

/// The SQL type of a column follows from the type of the member, unless its row says otherwise.
template <class Value>
constexpr std::string_view sqlTypeOf()
{
    if constexpr (std::is_same_v<Value, Text>)
        return "VARCHAR(255)";
    else if constexpr (std::is_same_v<Value, bool>)
        return "BOOLEAN";
    else if constexpr (std::is_floating_point_v<Value>)
        return "DOUBLE";
    else
        return "UNSIGNED BIG INT";
}

/// The keys of an identifier beside its own: where delete requests name it, and what stands in when its own is missing.
struct IdKeys {
    std::string_view deleteKey;
    std::string_view alternativeKey;
};

/// The identifier: required in every request, the primary key of the table.
template <class Record, class Api>
struct Id {
    std::string_view field;
    std::string_view key;
    quint32 Record::*member;
    unsigned int Api::*apiMember;
    IdKeys keys;
    std::string_view sqlType = sqlTypeOf<quint32>();

    constexpr Id(std::string_view fieldName, std::string_view jsonKey, quint32 Record::*recordMember,
                 unsigned int Api::*structureMember, IdKeys furtherKeys = {})
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember), keys(furtherKeys)
    {
    }
};

/// An optional value in a column of its own.
template <class Record, class Value, class Api, class ApiMember>
struct Column {
    static_assert(std::is_same_v<ApiMember, typename ApiValue<Value>::Type>,
                  "the C structure's member must point to the type of the record's member");

    std::string_view field;
    std::string_view key;
    std::optional<Value> Record::*member;
    ApiMember *Api::*apiMember;
    std::string_view sqlType;

    constexpr Column(std::string_view fieldName, std::string_view jsonKey, std::optional<Value> Record::*recordMember,
                     ApiMember *Api::*structureMember, std::string_view departingSqlType = sqlTypeOf<Value>())
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember), sqlType(departingSqlType)
    {
    }
};

/// Another record, stored as its identifier and joined on read; in a request it is the identifier.
/// While the other record is not in the cache it reads as its identifier alone.
template <class Record, class Other, class Api, class ApiMember>
struct Reference {
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");

    std::string_view field;
    std::string_view key;
    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;
    std::string_view sqlType = sqlTypeOf<quint32>();

    constexpr Reference(std::string_view fieldName, std::string_view jsonKey,
                        std::optional<Other> Record::*recordMember, ApiMember *Api::*structureMember)
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember)
    {
    }
};

/// Another record, named by one of this record's columns and joined on read: neither stored nor part of a request.
template <class Record, class Other, class Api, class ApiMember>
struct Joined {
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");

    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;
    std::optional<quint32> Record::*identifier;

    constexpr Joined(std::optional<Other> Record::*recordMember, ApiMember *Api::*structureMember,
                     std::optional<quint32> Record::*namedBy)
        : member(recordMember), apiMember(structureMember), identifier(namedBy)
    {
    }
};

/// A row with a column of its own in the record's table.
template <class Row>
concept Stored = requires(const Row &row)
{
    row.field;
};

/// Calls `visit` with each row of the record's field list, in its order.
template <class Record, class Visitor>
constexpr void forEachField(Visitor &&visit)
{
    std::apply([&](const auto &...row) { (visit(row), ...); }, Schema<Record>::fields);
}

/// Calls `visit` with each row that has a column, in the list's order.
template <class Record, class Visitor>
constexpr void forEachColumn(Visitor &&visit)
{
    forEachField<Record>([&](const auto &row) {
        if constexpr (Stored<decltype(row)>)
            visit(row);
    });
}

} // namespace tarnelLib::controller
