#pragma once

#include "entities/field.h"
#include "parsing/jsonreader.h"

#include <algorithm>
#include <array>

namespace tarnelLib::controller {

using diagnostics::Reading;

// The readers of single values, from the value ahead. `Wrong` if it is not of the type that the destination takes: then
// it has been skipped. Null is of no type.

/// The low 32 bits of the number cut to a whole one: -1 reads as 4294967295, 1.9 as 1.
[[nodiscard]] Reading readValue(JsonReader &json, quint32 &destination);
/// A whole number within 32 bits; any other number reads as 0.
[[nodiscard]] Reading readValue(JsonReader &json, qint32 &destination);
/// The low 8 bits of what reads as a signed number: 300 reads as 44, 2.5 as 0.
[[nodiscard]] Reading readValue(JsonReader &json, quint8 &destination);
/// A number is true unless it reads as the signed number 0. The JSON values true and false are taken, and are no
/// numbers: both read as false.
[[nodiscard]] Reading readValue(JsonReader &json, bool &destination);
/// The number cut to a whole one, up to 2^64.
[[nodiscard]] Reading readValue(JsonReader &json, quint64 &destination);
[[nodiscard]] Reading readValue(JsonReader &json, double &destination);
[[nodiscard]] Reading readValue(JsonReader &json, std::optional<Text> &destination);

template <class Value>
[[nodiscard]] Reading readValue(JsonReader &json, std::optional<Value> &destination)
{
    return readValue(json, destination.emplace());
}
/// A record, by its field list.
template <class Record>
[[nodiscard]] Reading readValue(JsonReader &json, Record &record) requires requires
{
    Schema<Record>::fields;
};
/// The array ahead. False if it is none, or if an item is not of the type; all of it has been passed then.
template <class Item>
[[nodiscard]] Reading readValue(JsonReader &json, std::vector<Item> &items);

/// Fills a record from the object ahead, by the record's field list. Of a key that stands there twice the last value
/// counts, also if an earlier one was of a wrong type.
template <class Record>
class RecordReader
{
public:
    /// False if there is no object ahead, or it lacks a key that it must have, or has a value of a wrong type. The
    /// object names the parents as well if they are asked for.
    [[nodiscard]] static bool read(JsonReader &json, Record &record, ParentIds<Record> *parents = nullptr)
    {
        return RecordReader(record, parents).readFields(json);
    }

private:
    static constexpr auto &fields = Schema<Record>::fields;
    static constexpr std::size_t fieldCount = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;

    /// What is done with the value of a key. Besides the fields there is the key that stands in for the identifier's.
    struct Entry {
        std::string_view key; ///< Empty for a field that requests do not have.
        Reading (*read)(RecordReader &reader, JsonReader &json) = nullptr;
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
                json.oddities.add(Schema<Record>::table, key, Reading::UnknownKey);
                json.skip();
                return;
            }
            const quint64 bit = 1ULL << position;
            const Reading reading = entries[position].read(*this, json);
            m_found |= bit;
            m_wrong &= ~bit;
            if (reading == Reading::Wrong)
                m_wrong |= bit;
            else if (reading != Reading::Fine)
                json.oddities.add(Schema<Record>::table, entries[position].key, reading);
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
        forEachField<Record>([&]<class Row>(const Row &row) {
            const bool isFound = (m_found & 1ULL << position++) != 0;
            if constexpr (isParentKey<Row>)
                isComplete = isComplete && (m_parents == nullptr || isFound);
            else if constexpr (is<Row, Id>)
                isComplete = isComplete && takeId(row, isFound);
            else if constexpr (is<Row, Attached>) {
                if (isFound && m_record.*row.member)
                    (m_record.*row.member)->id = m_record.id;
            }
        });
        return isComplete;
    }

    bool takeId(const auto &row, bool isFound)
    {
        constexpr quint64 alternativeBit = 1ULL << alternativeId;
        if (isFound) {
            m_wrong &= ~alternativeBit; // It was not needed.
            return true;
        }
        const bool hasAlternative = (m_found & alternativeBit) != 0;
        if (hasAlternative)
            m_record.*row.member = m_alternativeId;
        return row.key.empty() || hasAlternative;
    }

    template <std::size_t Position>
    static Reading readAt(RecordReader &reader, JsonReader &json)
    {
        const auto &row = std::get<Position>(fields);
        if constexpr (!isParentKey<std::remove_cvref_t<decltype(row)>>)
            return readValue(json, reader.m_record.*row.member);
        else if (reader.m_parents != nullptr)
            return readValue(json, reader.m_parents->at(Position)); // Parents are the first rows of their list.
        json.skip();
        return Reading::Fine;
    }

    static Reading readAlternativeId(RecordReader &reader, JsonReader &json)
    {
        return readValue(json, reader.m_alternativeId);
    }

    template <std::size_t Position = 0>
    static constexpr void addEntries(Entries &list)
    {
        const auto &field = std::get<Position>(fields);
        if constexpr (requires { field.keys; }) {
            if (field.keys.alternativeKey != field.key)
                list[alternativeId] = {field.keys.alternativeKey, readAlternativeId};
        }
        if constexpr (requires { field.requestKey; })
            list[Position] = {field.requestKey, readAt<Position>};
        else if constexpr (requires { field.key; })
            list[Position] = {field.key, readAt<Position>};
        if constexpr (Position + 1 < fieldCount)
            addEntries<Position + 1>(list);
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
constexpr typename RecordReader<Record>::Entries RecordReader<Record>::entries = [] {
    Entries list{};
    addEntries(list);
    return list;
}();

template <class Record>
Reading readValue(JsonReader &json, Record &record) requires requires
{
    Schema<Record>::fields;
}
{
    return RecordReader<Record>::read(json, record) ? Reading::Fine : Reading::Wrong;
}

template <class Item>
Reading readValue(JsonReader &json, std::vector<Item> &items)
{
    items.clear();
    if (json.type() != JsonReader::Type::Array) {
        json.skip();
        return Reading::Wrong;
    }
    Reading worst = Reading::Fine;
    json.readArray([&] { worst = std::max(worst, readValue(json, items.emplace_back())); });
    return worst;
}

} // namespace tarnelLib::controller
