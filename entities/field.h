#pragma once

#include "entities/text.h"

#include <QtGlobal>

#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

/// The kinds of row that a record's list of fields is made of.
///
/// The list is the only place where a field is written down: table, statements, reading of rows and requests, filters,
/// conversion to the C structure and release are loops over it. A row names the field as the column does (the column is
/// the table's name followed by it), then the JSON key, the record's member and the C structure's member.
namespace tarnelLib::controller {

/// The field list of a record type, specialised beside the record:
/// `Api` (the C structure), `table` (its name) and `fields` (a tuple of the rows below, in the order of the columns).
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
    std::string_view deleteKey = {};
    std::string_view alternativeKey = {};
};

/// The record's identifier, part of the table's primary key. It is required in a request, unless its key is empty:
/// then the enclosing record gives it.
template <class Record, class Api>
struct Id {
    static constexpr bool isPrimaryKey = true;
    static constexpr std::string_view sqlType = sqlTypeOf<quint32>();

    std::string_view field;
    std::string_view key;
    quint32 Record::*member;
    unsigned int Api::*apiMember;
    IdKeys keys;

    constexpr Id(std::string_view fieldName, std::string_view jsonKey, quint32 Record::*recordMember,
                 unsigned int Api::*structureMember, IdKeys furtherKeys = {})
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember), keys(furtherKeys)
    {
    }
};

/// Whether an enclosing record's identifier is part of the primary key.
enum class InPrimaryKey { Yes, No };

/// The identifier of an enclosing record: a column, but no member. Requests that name the record by itself give it
/// under the key; filters do not know it.
struct ParentKey {
    static constexpr std::string_view sqlType = sqlTypeOf<quint32>();

    std::string_view field;
    std::string_view requestKey;
    bool isPrimaryKey;

    constexpr ParentKey(std::string_view fieldName, std::string_view keyInRequests,
                        InPrimaryKey inPrimaryKey = InPrimaryKey::Yes)
        : field(fieldName), requestKey(keyInRequests), isPrimaryKey(inPrimaryKey == InPrimaryKey::Yes)
    {
    }
};

/// Whether lists can be filtered by a column.
enum class Filter { Accepted, Refused };

struct ColumnOptions {
    std::string_view sqlType = {}; ///< Where it departs from the member's type.
    Filter filter = Filter::Accepted;
};

/// An optional value in a column of its own.
template <class Record, class Value, class Api, class ApiMember>
struct Column {
    static_assert(std::is_same_v<ApiMember, typename ApiValue<Value>::Type>,
                  "the C structure's member must point to the type of the record's member");
    static constexpr bool isPrimaryKey = false;

    std::string_view field;
    std::string_view key;
    std::optional<Value> Record::*member;
    ApiMember *Api::*apiMember;
    std::string_view sqlType;
    Filter filter;

    constexpr Column(std::string_view fieldName, std::string_view jsonKey, std::optional<Value> Record::*recordMember,
                     ApiMember *Api::*structureMember, ColumnOptions options = {})
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember),
          sqlType(options.sqlType.empty() ? sqlTypeOf<Value>() : options.sqlType), filter(options.filter)
    {
    }
};

/// A value of another table's row, which the read joins: neither stored here nor part of a request.
template <class Record, class Value, class Api, class ApiMember, class Other>
struct Borrowed {
    static_assert(std::is_same_v<ApiMember, typename ApiValue<Value>::Type>,
                  "the C structure's member must point to the type of the record's member");

    std::optional<Value> Record::*member;
    ApiMember *Api::*apiMember;
    std::optional<Value> Other::*source;

    constexpr Borrowed(std::optional<Value> Record::*recordMember, ApiMember *Api::*structureMember,
                       std::optional<Value> Other::*otherMember)
        : member(recordMember), apiMember(structureMember), source(otherMember)
    {
    }
};

/// How another record that a record names reads while it is not in the cache: as its identifier alone, or not at all.
/// `Absent` goes for all that is nested in the other record as well.
enum class Uncached { IdentifierAlone, Absent };

/// How a request gives another record: by its identifier, or whole.
enum class InRequest { AsIdentifier, Whole };

struct ReferenceOptions {
    Uncached uncached = Uncached::IdentifierAlone;
    InRequest inRequest = InRequest::AsIdentifier;
};

/// Another record, stored as its identifier and joined on read.
template <class Record, class Other, class Api, class ApiMember>
struct Reference {
    using Nested = Other;
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");
    static constexpr bool isPrimaryKey = false;
    static constexpr std::string_view sqlType = sqlTypeOf<quint32>();

    std::string_view field;
    std::string_view key;
    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;
    ReferenceOptions options;

    constexpr Reference(std::string_view fieldName, std::string_view jsonKey,
                        std::optional<Other> Record::*recordMember, ApiMember *Api::*structureMember,
                        ReferenceOptions departures = {})
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember), options(departures)
    {
    }
};

/// Another record, named by one of this record's columns and joined on read: not part of a request.
template <class Record, class Other, class Api, class ApiMember, class Identifier>
struct Joined {
    using Nested = Other;
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");

    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;
    std::optional<Identifier> Record::*identifier;
    Uncached uncached; ///< For what is nested in the other record.

    constexpr Joined(std::optional<Other> Record::*recordMember, ApiMember *Api::*structureMember,
                     std::optional<Identifier> Record::*namedBy, Uncached nested = Uncached::IdentifierAlone)
        : member(recordMember), apiMember(structureMember), identifier(namedBy), uncached(nested)
    {
    }
};

/// Another record, of the same identifier in a table of its own and joined on read; a request gives it whole.
template <class Record, class Other, class Api, class ApiMember>
struct Attached {
    using Nested = Other;
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");

    std::string_view key;
    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;

    constexpr Attached(std::string_view jsonKey, std::optional<Other> Record::*recordMember,
                       ApiMember *Api::*structureMember)
        : key(jsonKey), member(recordMember), apiMember(structureMember)
    {
    }
};

/// Another record, which a read of its own fills: neither stored here nor part of a request.
template <class Record, class Other, class Api, class ApiMember>
struct ReadApart {
    using Nested = Other;
    static_assert(std::is_same_v<ApiMember, ApiOf<Other>>,
                  "the C structure's member must point to the structure of the record's member");

    std::optional<Other> Record::*member;
    ApiMember *Api::*apiMember;

    constexpr ReadApart(std::optional<Other> Record::*recordMember, ApiMember *Api::*structureMember)
        : member(recordMember), apiMember(structureMember)
    {
    }
};

/// A list of records, or of identifiers, that is kept in tables of its own; a request gives it as an array.
template <class Record, class Item, class Api, class ApiItem>
struct Children {
    std::string_view key;
    std::vector<Item> Record::*member;
    ApiItem *Api::*apiMember;
    unsigned int Api::*apiCount;

    constexpr Children(std::string_view jsonKey, std::vector<Item> Record::*recordMember,
                       ApiItem *Api::*structureMember, unsigned int Api::*structureCount)
        : key(jsonKey), member(recordMember), apiMember(structureMember), apiCount(structureCount)
    {
    }
};

/// A row with a column of its own in the record's table.
template <class Row>
concept Stored = requires(const Row &row)
{
    row.isPrimaryKey;
};

/// A row with an optional value.
template <class Row>
concept HoldsValue = requires(const Row &row)
{
    row.filter;
}
|| requires(const Row &row)
{
    row.source;
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

template <class Row>
constexpr bool isParentKey = std::is_same_v<std::remove_cvref_t<Row>, ParentKey>;

/// How many enclosing records a record's table names.
template <class Record>
constexpr std::size_t parentCount = [] {
    std::size_t count = 0;
    forEachField<Record>([&](const auto &row) { count += isParentKey<decltype(row)> ? 1U : 0U; });
    return count;
}();

} // namespace tarnelLib::controller
