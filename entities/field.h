#pragma once

#include "entities/text.h"

#include <QtGlobal>

#include <array>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

/// The kinds of row that a record's list of fields is made of.
///
/// A record holds what requests carry, a C structure what reads hand out. The list of a record is the only place where
/// a field is written down: table, statements, requests, filters, the reading of rows and the release of structures are
/// loops over it. A row names the field as the column does (the column is the table's name followed by it), then the
/// JSON key, the record's member and the C structure's member.
namespace tarnelLib::controller {

/// The field list of a record type, specialised beside the record:
/// `Api` (the C structure), `table` (its name) and `fields` (a tuple of the rows below, in the order of the columns).
template <class Record>
struct Schema;

template <class Record>
using ApiOf = typename Schema<Record>::Api;

/// What the pointer of an optional member of the C structure points to: a row with another pointer does not compile.
template <class Value>
using ApiValue = std::conditional_t<std::is_same_v<Value, Text>, unsigned short, Value>;

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
    IdKeys keys = {};
};
template <class Record, class Api>
Id(std::string_view, std::string_view, quint32 Record::*, unsigned int Api::*, IdKeys = {}) -> Id<Record, Api>;

/// The identifier of an enclosing record: a column, but no member. Requests that name the record by itself give it
/// under the key; filters do not know it.
struct ParentKey {
    static constexpr std::string_view sqlType = sqlTypeOf<quint32>();

    std::string_view field;
    std::string_view requestKey;
    bool isPrimaryKey = true;
};

/// Whether lists can be filtered by a column.
enum class Filter { Accepted, Refused };

struct ColumnOptions {
    std::string_view sqlType = {}; ///< Where it departs from the member's type.
    Filter filter = Filter::Accepted;
};

/// An optional value in a column of its own.
template <class Record, class Value, class Api>
struct Column {
    static constexpr bool isPrimaryKey = false;

    std::string_view field;
    std::string_view key;
    std::optional<Value> Record::*member;
    ApiValue<Value> *Api::*apiMember;
    std::string_view sqlType;
    Filter filter;

    constexpr Column(std::string_view fieldName, std::string_view jsonKey, std::optional<Value> Record::*recordMember,
                     ApiValue<Value> *Api::*structureMember, ColumnOptions options = {})
        : field(fieldName), key(jsonKey), member(recordMember), apiMember(structureMember),
          sqlType(options.sqlType.empty() ? sqlTypeOf<Value>() : options.sqlType), filter(options.filter)
    {
    }
};

/// A value of another table's row, which the read joins.
template <class Api, class Value, class Other>
struct Borrowed {
    ApiValue<Value> *Api::*apiMember;
    std::optional<Value> Other::*source;
};
template <class Api, class Value, class Other>
Borrowed(ApiValue<Value> *Api::*, std::optional<Value> Other::*) -> Borrowed<Api, Value, Other>;

/// How another record reads while it is not in the cache: as its identifier alone, or not at all. `Absent` goes for all
/// that is nested in the other record as well.
enum class Uncached { IdentifierAlone, Absent };

/// Whether 0 is an identifier like others.
enum class Zero { IsIdentifier, IsNone };

/// Another record, joined on read by the identifier in this record's column. The record's member says what a request
/// gives: the other record's identifier, or all of it.
template <class Record, class Given, class Api, class Other>
struct Reference {
    static_assert(std::is_same_v<Given, quint32> || std::is_same_v<Given, Other>,
                  "the record's member must hold the other record, or its identifier");
    using Nested = Other;
    static constexpr bool isPrimaryKey = false;
    static constexpr std::string_view sqlType = sqlTypeOf<quint32>();
    static constexpr auto zero = Zero::IsIdentifier;

    std::string_view field;
    std::string_view key;
    std::optional<Given> Record::*member;
    ApiOf<Other> *Api::*apiMember;
    quint32 Other::*identified;
    Uncached uncached = Uncached::IdentifierAlone;
};
template <class Record, class Given, class Api, class Other>
Reference(std::string_view, std::string_view, std::optional<Given> Record::*, ApiOf<Other> *Api::*, quint32 Other::*,
          Uncached = {}) -> Reference<Record, Given, Api, Other>;

/// Another record, joined on read by the value of one of this record's columns.
template <class Api, class Record, class Value, class Other>
struct Joined {
    using Nested = Other;

    ApiOf<Other> *Api::*apiMember;
    std::optional<Value> Record::*identifier;
    quint32 Other::*identified;
    Uncached uncached = Uncached::IdentifierAlone; ///< For what is nested in the other record.
    Zero zero = Zero::IsIdentifier;
};
template <class Api, class Record, class Value, class Other>
Joined(ApiOf<Other> *Api::*, std::optional<Value> Record::*, quint32 Other::*, Uncached = {}, Zero = {})
    -> Joined<Api, Record, Value, Other>;

/// Another record, of the same identifier in a table of its own and joined on read; a request gives all of it.
template <class Record, class Other, class Api>
struct Attached {
    using Nested = Other;
    static constexpr auto identifier = &Record::id;
    static constexpr auto uncached = Uncached::IdentifierAlone;
    static constexpr auto zero = Zero::IsIdentifier;

    std::string_view key;
    std::optional<Other> Record::*member;
    ApiOf<Other> *Api::*apiMember;
};
template <class Record, class Other, class Api>
Attached(std::string_view, std::optional<Other> Record::*, ApiOf<Other> *Api::*) -> Attached<Record, Other, Api>;

/// A list of records, or of identifiers, that is kept in tables of its own; a request gives it as an array.
template <class Record, class Item, class Api, class ApiItem>
struct Children {
    using Nested = Item;

    std::string_view key;
    std::vector<Item> Record::*member;
    ApiItem *Api::*apiMember;
    unsigned int Api::*apiCount;
};
template <class Record, class Item, class Api, class ApiItem>
Children(std::string_view, std::vector<Item> Record::*, ApiItem *Api::*, unsigned int Api::*)
    -> Children<Record, Item, Api, ApiItem>;

/// Whether a row is of a kind: `is<Row, Column>`.
template <class Row, template <class...> class Kind>
constexpr bool is = false;
template <template <class...> class Kind, class... Parameters>
inline constexpr bool is<Kind<Parameters...>, Kind> = true;

template <class Row>
constexpr bool isParentKey = std::is_same_v<Row, ParentKey>;

/// Whether a row has a column of its own in the record's table.
template <class Row>
constexpr bool isStored = isParentKey<Row> || is<Row, Id> || is<Row, Column> || is<Row, Reference>;

/// Whether a row is another record that the read joins.
template <class Row>
constexpr bool isJoined = is<Row, Reference> || is<Row, Joined> || is<Row, Attached>;

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
    forEachField<Record>([&]<class Row>(const Row &row) {
        if constexpr (isStored<Row>)
            visit(row);
    });
}

/// How many enclosing records a record's table names.
template <class Record>
constexpr std::size_t parentCount = [] {
    std::size_t count = 0;
    forEachField<Record>([&]<class Row>(const Row &) { count += isParentKey<Row> ? 1U : 0U; });
    return count;
}();

/// The identifiers of the records that enclose a record.
template <class Record>
using ParentIds = std::array<quint32, parentCount<Record>>;

/// The identifiers of the enclosing records, and then the record's own.
template <class Record>
using Identifiers = std::array<quint32, parentCount<Record> + 1>;

} // namespace tarnelLib::controller
