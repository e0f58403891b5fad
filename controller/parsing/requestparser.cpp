#include "controller/parsing/requestparser.h"

#include "controller/parsing/jsonobject.h"

namespace tarnelLib::controller
{

namespace
{

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

private:
    template <class Record, class Api>
    static bool read(const Id<Record, Api> &field, const QJsonObject &object, Record &record)
    {
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
        return value.isUndefined() || readValue(value, (record.*field.member).emplace().id);
    }

    template <class Record, class Other, class Api, class ApiMember>
    static bool read(const Joined<Record, Other, Api, ApiMember> &, const QJsonObject &, Record &)
    {
        return true;
    }
};

/// The object under "D".
Result parseEnvelope(std::u16string_view text, QJsonObject &content)
{
    const std::optional<QJsonObject> request = deserializeJsonObject(text);
    if (!request)
        return Result::InvalidArgument;
    const QJsonValue value = valueOf(*request, "D");
    content = value.toObject();
    return value.isObject() ? Result::Success : Result::InvalidRequest;
}

template <class Record>
std::string_view deleteKey()
{
    std::string_view key;
    forEachField<Record>([&](const auto &field) {
        if constexpr (requires { field.keys.deleteKey; })
            key = field.keys.deleteKey;
    });
    return key;
}

/// What is no number reads as 0.
Result parseGetItemId(std::u16string_view text, quint32 &id, std::string_view key)
{
    QJsonObject content;
    if (const Result result = parseEnvelope(text, content); result != Result::Success)
        return result;
    const QJsonValue value = valueOf(content, key);
    if (value.isUndefined())
        return Result::InvalidRequest;
    id = static_cast<quint32>(truncated(value.toDouble()));
    return Result::Success;
}

} // namespace

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
        if (!item.isObject() || !RecordReader::to(records.emplace_back(), item.toObject()))
            return Result::InvalidRequest;
    }
    return Result::Success;
}

template <class Record>
Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record)
{
    QJsonObject content;
    if (const Result result = parseEnvelope(text, content); result != Result::Success)
        return result;
    return RecordReader::to(record.emplace(), content) ? Result::Success : Result::InvalidRequest;
}

template <class Record>
Result parseDelete(std::u16string_view text, quint32 &id)
{
    return parseGetItemId(text, id, deleteKey<Record>());
}

template Result parseAddItems(std::u16string_view, std::vector<Locale> &);

template Result parseAddItems(std::u16string_view, std::vector<Domain> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Domain> &);
template Result parseDelete<Domain>(std::u16string_view, quint32 &);

template Result parseAddItems(std::u16string_view, std::vector<User> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<User> &);
template Result parseDelete<User>(std::u16string_view, quint32 &);

} // namespace tarnelLib::controller
