#pragma once

#include "entities/event.h"
#include "entities/organization.h"
#include "entities/site.h"
#include "oracle/jsonobject.h"
#include "parsing/requestparser.h"

#include <algorithm>

namespace oracle {

using namespace tarnelLib::controller;
using tarnelLib::Result;

/// Fills records from JSON objects, by their field lists. False ends a request: a field is missing that must be there,
/// or has a value of another type; null is no value of any.
class RecordReader
{
public:
    template <class Record>
    [[nodiscard]] static bool to(Record &record, const QJsonObject &object)
    {
        return std::apply([&](const auto &...field) { return (read(field, object, record) && ...); },
                          Schema<Record>::fields);
    }

    template <class Item>
    [[nodiscard]] static bool readItem(const QJsonValue &value, Item &item)
    {
        return value.isObject() && to(item, value.toObject());
    }

    [[nodiscard]] static bool readItem(const QJsonValue &value, quint32 &item) { return readValue(value, item); }

private:
    template <class Row, class Record>
    static bool read(const Row &row, const QJsonObject &object, Record &record)
    {
        // What is read from the tables, or given beside the record, is no part of it in a request.
        if constexpr (requires { row.key; }) {
            auto &member = record.*row.member;
            QJsonValue value = valueOf(object, row.key);
            if constexpr (is<Row, Id>) {
                if (value.isUndefined() && !row.keys.alternativeKey.empty())
                    value = valueOf(object, row.keys.alternativeKey);
                return row.key.empty() || readValue(value, member); // The enclosing record gives one without a key.
            } else if (value.isUndefined()) {
                return true;
            } else if constexpr (is<Row, Children>) {
                const QJsonArray items = value.toArray();
                return value.isArray() && std::all_of(items.begin(), items.end(), [&](const QJsonValue &item) {
                           return readItem(item, member.emplace_back());
                       });
            } else if constexpr (is<Row, Reference>) {
                return readItem(value, member.emplace());
            } else if constexpr (is<Row, Attached>) {
                member.emplace().id = record.id;
                return readItem(value, *member);
            } else if constexpr (std::is_same_v<decltype(member), std::optional<Text> &>) {
                return readValue(value, member);
            } else {
                return readValue(value, member.emplace());
            }
        }
        return true;
    }
};

/// The object under "D".
inline Result parseEnvelope(std::u16string_view text, QJsonObject &content)
{
    const std::optional<QJsonObject> request = deserializeJsonObject(text);
    if (!request)
        return Result::InvalidArgument;
    const QJsonValue value = valueOf(*request, "D");
    content = value.toObject();
    return value.isObject() ? Result::Success : Result::InvalidRequest;
}

/// The keys under which a request by identifier names the parents and the record.
template <class Record>
auto identifierKeys()
{
    std::array<std::string_view, parentCount<Record> + 1> keys;
    std::size_t position = 0;
    forEachField<Record>([&](const auto &field) {
        if constexpr (requires { field.requestKey; })
            keys.at(position++) = field.requestKey;
        else if constexpr (requires { field.keys; })
            keys.at(position++) = field.keys.deleteKey;
    });
    return keys;
}

template <class Record>
Result parseAddItems(std::u16string_view text, std::vector<Record> &records)
{
    QJsonObject content;
    if (const Result result = parseEnvelope(text, content); result != Result::Success)
        return result;
    const QJsonValue value = valueOf(content, "items");
    if (!value.isArray())
        return Result::InvalidRequest;
    const QJsonArray items = value.toArray();
    if (items.isEmpty())
        return Result::InvalidArgument;
    records.reserve(static_cast<std::size_t>(items.size()));
    for (const QJsonValue item : items) {
        if (!RecordReader::readItem(item, records.emplace_back()))
            return Result::InvalidRequest;
    }
    return Result::Success;
}

template <class Record>
Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record, ParentIds<Record> &parents)
{
    QJsonObject content;
    if (const Result result = parseEnvelope(text, content); result != Result::Success)
        return result;
    const auto keys = identifierKeys<Record>();
    for (std::size_t i = 0; i < parents.size(); ++i) {
        if (!readValue(valueOf(content, keys.at(i)), parents.at(i)))
            return Result::InvalidRequest;
    }
    return RecordReader::to(record.emplace(), content) ? Result::Success : Result::InvalidRequest;
}

template <class Record>
Result parseDelete(std::u16string_view text, Identifiers<Record> &identifiers)
{
    QJsonObject content;
    if (const Result result = parseEnvelope(text, content); result != Result::Success)
        return result;
    const auto keys = identifierKeys<Record>();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const QJsonValue value = valueOf(content, keys.at(i));
        if (value.isUndefined())
            return Result::InvalidRequest;
        identifiers.at(i) = static_cast<quint32>(truncated(value.toDouble()));
    }
    return Result::Success;
}

} // namespace oracle
