#pragma once

#include "entities/field.h"
#include "parsing/jsonreader.h"

#include <array>

namespace tarnelLib::controller {

/// A number cut to a whole one; 0 beyond the signed 64-bit range.
qint64 truncated(double number);

// The readers of single values, from the value ahead. False if it is not of the type that the destination takes: then
// it has been skipped. Null is of no type.

/// The low 32 bits of the number cut to a whole one: -1 reads as 4294967295, 1.9 as 1.
[[nodiscard]] bool readValue(JsonReader &json, quint32 &destination);
/// A whole number within 32 bits; any other number reads as 0.
[[nodiscard]] bool readValue(JsonReader &json, qint32 &destination);
/// The low 8 bits of what reads as a signed number: 300 reads as 44, 2.5 as 0.
[[nodiscard]] bool readValue(JsonReader &json, quint8 &destination);
/// A number is true unless it reads as the signed number 0. The JSON values true and false are taken, and are no
/// numbers: both read as false.
[[nodiscard]] bool readValue(JsonReader &json, bool &destination);
/// The number cut to a whole one, up to 2^64.
[[nodiscard]] bool readValue(JsonReader &json, quint64 &destination);
[[nodiscard]] bool readValue(JsonReader &json, double &destination);
[[nodiscard]] bool readValue(JsonReader &json, std::optional<Text> &destination);

/// Reads the array ahead. False if it is none, or if an item is not of the type; all of it has been passed then.
template <class Item>
[[nodiscard]] bool readItems(JsonReader &json, std::vector<Item> &items);

/// The identifiers of the records that enclose a record.
template <class Record>
using ParentIds = std::array<quint32, parentCount<Record>>;

/// Fills a record from the object ahead, by the record's field list. Of a key that stands there twice the last value
/// counts, also if an earlier one was of a wrong type.
template <class Record>
class RecordReader
{
public:
    /// False if there is no object ahead, or it lacks a key that it must have, or has a value of a wrong type.
    [[nodiscard]] static bool read(JsonReader &json, Record &record)
    {
        return RecordReader(record, nullptr).readFields(json);
    }

    /// As `read`, of an object that names the parents as well.
    [[nodiscard]] static bool read(JsonReader &json, Record &record, ParentIds<Record> &parents)
    {
        return RecordReader(record, &parents).readFields(json);
    }

private:
    static constexpr auto &fields = Schema<Record>::fields;
    static constexpr std::size_t fieldCount = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;

    /// What is done with the value of a key. Besides the fields there is the key that stands in for the identifier's.
    struct Entry {
        std::string_view key; ///< Empty for a field that requests do not have.
        bool (*read)(RecordReader &reader, JsonReader &json) = nullptr;
    };
    static constexpr std::size_t alternativeId = fieldCount;
    using Entries = std::array<Entry, fieldCount + 1>;

    RecordReader(Record &record, ParentIds<Record> *parents) : m_record(record), m_parents(parents) {}

    bool readFields(JsonReader &json)
    {
        if (json.type() != JsonReader::Type::Object) {
            json.skip();
            return false;
        }
        json.readObject([&](std::u16string_view key) {
            const std::size_t position = find(key);
            if (position == entries.size()) {
                json.skip();
                return;
            }
            const quint64 bit = 1ULL << position;
            const bool isAccepted = entries[position].read(*this, json);
            m_found |= bit;
            m_wrong = isAccepted ? m_wrong & ~bit : m_wrong | bit;
        });
        return takeIdentifiers() && m_wrong == 0;
    }

    /// Keys mostly come in the order of the list, so that the search starts behind the last one.
    std::size_t find(std::u16string_view key)
    {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::size_t position = (m_next + i) % entries.size();
            const std::string_view expected = entries[position].key;
            if (!expected.empty() && std::equal(key.begin(), key.end(), expected.begin(), expected.end())) {
                m_next = position + 1;
                return position;
            }
        }
        return entries.size();
    }

    /// Settles the identifiers when all keys have been seen; false if one is missing.
    bool takeIdentifiers()
    {
        bool isComplete = true;
        std::size_t position = 0;
        forEachField<Record>([&](const auto &field) {
            const quint64 bit = 1ULL << position++;
            isComplete = isComplete && take(field, (m_found & bit) != 0);
        });
        return isComplete;
    }

    template <class Api>
    bool take(const Id<Record, Api> &field, bool isFound)
    {
        constexpr quint64 alternativeBit = 1ULL << alternativeId;
        if (isFound) {
            m_wrong &= ~alternativeBit; // It was not needed.
            return true;
        }
        if ((m_found & alternativeBit) != 0)
            m_record.*field.member = m_alternativeId;
        return field.key.empty() || (m_found & alternativeBit) != 0;
    }

    [[nodiscard]] bool take(const ParentKey &, bool isFound) const { return m_parents == nullptr || isFound; }

    template <class Other, class Api, class ApiMember>
    bool take(const Attached<Record, Other, Api, ApiMember> &field, bool isFound)
    {
        if (isFound && m_record.*field.member)
            (m_record.*field.member)->id = m_record.id;
        return true;
    }

    /// Constant, as the one for parents: otherwise this one would be the better match for them.
    template <class Row>
    [[nodiscard]] bool take(const Row &, bool) const
    {
        return true;
    }

    template <class Api>
    bool readField(JsonReader &json, const Id<Record, Api> &field, std::size_t)
    {
        return readValue(json, m_record.*field.member);
    }

    bool readField(JsonReader &json, const ParentKey &, std::size_t parent)
    {
        if (m_parents != nullptr)
            return readValue(json, m_parents->at(parent));
        json.skip();
        return true;
    }

    template <class Value, class Api, class ApiMember>
    bool readField(JsonReader &json, const Column<Record, Value, Api, ApiMember> &field, std::size_t)
    {
        std::optional<Value> &member = m_record.*field.member;
        if constexpr (std::is_same_v<Value, Text>)
            return readValue(json, member);
        else
            return readValue(json, member.emplace());
    }

    template <class Other, class Api, class ApiMember>
    bool readField(JsonReader &json, const Reference<Record, Other, Api, ApiMember> &field, std::size_t)
    {
        Other &other = (m_record.*field.member).emplace();
        return field.options.inRequest == InRequest::Whole ? RecordReader<Other>::read(json, other)
                                                           : readValue(json, other.id);
    }

    template <class Other, class Api, class ApiMember>
    bool readField(JsonReader &json, const Attached<Record, Other, Api, ApiMember> &field, std::size_t)
    {
        return RecordReader<Other>::read(json, (m_record.*field.member).emplace());
    }

    template <class Item, class Api, class ApiItem>
    bool readField(JsonReader &json, const Children<Record, Item, Api, ApiItem> &field, std::size_t)
    {
        return readItems(json, m_record.*field.member);
    }

    template <std::size_t Position>
    static bool readAt(RecordReader &reader, JsonReader &json)
    {
        // Parents are the first rows of their list.
        return reader.readField(json, std::get<Position>(fields), Position);
    }

    static bool readAlternativeId(RecordReader &reader, JsonReader &json)
    {
        return readValue(json, reader.m_alternativeId);
    }

    template <std::size_t Position>
    static constexpr void addEntry(Entries &list)
    {
        const auto &field = std::get<Position>(fields);
        if constexpr (requires { field.keys; }) {
            if (field.keys.alternativeKey != field.key)
                list[alternativeId] = {field.keys.alternativeKey, readAlternativeId};
        }
        if constexpr (isParentKey<decltype(field)>)
            list[Position] = {field.requestKey, readAt<Position>};
        else if constexpr (requires { field.key; })
            list[Position] = {field.key, readAt<Position>};
    }

    static constexpr Entries makeEntries()
    {
        Entries list{};
        [&]<std::size_t... Position>(std::index_sequence<Position...>)
        {
            (addEntry<Position>(list), ...);
        }
        (std::make_index_sequence<fieldCount>());
        return list;
    }

    static const Entries entries;

    Record &m_record;
    ParentIds<Record> *m_parents;
    quint32 m_alternativeId = 0;
    std::size_t m_next = 0; ///< Where the next key is expected.
    quint64 m_found = 0;    ///< A bit for each entry whose key was there.
    quint64 m_wrong = 0;    ///< A bit for each entry whose last value was not accepted.
};

template <class Record>
constexpr typename RecordReader<Record>::Entries RecordReader<Record>::entries = RecordReader<Record>::makeEntries();

template <class Item>
bool readItems(JsonReader &json, std::vector<Item> &items)
{
    items.clear();
    if (json.type() != JsonReader::Type::Array) {
        json.skip();
        return false;
    }
    bool isAccepted = true;
    json.readArray([&] {
        Item &item = items.emplace_back();
        if constexpr (std::is_arithmetic_v<Item>)
            isAccepted = readValue(json, item) && isAccepted;
        else
            isAccepted = RecordReader<Item>::read(json, item) && isAccepted;
    });
    return isAccepted;
}

} // namespace tarnelLib::controller
