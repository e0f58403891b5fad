#pragma once

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
    template <class Record, class Api>
    static bool read(const Id<Record, Api> &field, const QJsonObject &object, Record &record)
    {
        if (field.key.empty())
            return true; // The enclosing record gives it.
        QJsonValue value = valueOf(object, field.key);
        if (value.isUndefined() && !field.keys.alternativeKey.empty())
            value = valueOf(object, field.keys.alternativeKey);
        return readValue(value, record.*field.member);
    }

    template <class Record, class Value, class Api, class ApiMember>
    static bool read(const Column<Record, Value, Api, ApiMember> &field, const QJsonObject &object, Record &record)
    {
        const QJsonValue value = valueOf(object, field.key);
        if (value.isUndefined())
            return true;
        std::optional<Value> &member = record.*field.member;
        if constexpr (std::is_same_v<Value, Text>)
            return readValue(value, member);
        else
            return readValue(value, member.emplace());
    }

    template <class Record, class Other, class Api, class ApiMember>
    static bool read(const Reference<Record, Other, Api, ApiMember> &field, const QJsonObject &object, Record &record)
    {
        const QJsonValue value = valueOf(object, field.key);
        if (value.isUndefined())
            return true;
        Other &other = (record.*field.member).emplace();
        return field.options.inRequest == InRequest::Whole ? readItem(value, other) : readValue(value, other.id);
    }

    template <class Record, class Other, class Api, class ApiMember>
    static bool read(const Attached<Record, Other, Api, ApiMember> &field, const QJsonObject &object, Record &record)
    {
        const QJsonValue value = valueOf(object, field.key);
        if (value.isUndefined())
            return true;
        Other &other = (record.*field.member).emplace();
        other.id = record.id;
        return readItem(value, other);
    }

    template <class Record, class Item, class Api, class ApiItem>
    static bool read(const Children<Record, Item, Api, ApiItem> &field, const QJsonObject &object, Record &record)
    {
        const QJsonValue value = valueOf(object, field.key);
        if (value.isUndefined())
            return true;
        if (!value.isArray())
            return false;
        const QJsonArray items = value.toArray();
        (record.*field.member).reserve(static_cast<std::size_t>(items.size()));
        return std::all_of(items.begin(), items.end(), [&](const QJsonValue &item) {
            return readItem(item, (record.*field.member).emplace_back());
        });
    }

    /// What is read from the tables, or given beside the record, is no part of it in a request.
    template <class Row, class Record>
    static bool read(const Row &, const QJsonObject &, Record &)
    {
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
std::array<std::string_view, parentCount<Record> + 1> identifierKeys()
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

inline Result parseRemoveAffectEvent(std::u16string_view text, quint32 &id)
{
    Identifiers<Event> identifiers{};
    const Result result = oracle::parseDelete<Event>(text, identifiers);
    id = identifiers.front();
    return result;
}

} // namespace oracle
