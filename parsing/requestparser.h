#pragma once

#include "controller/result.h"
#include "entities/field.h"
#include "parsing/recordreader.h"

#include <functional>

/// From the text of a request to records and identifiers. `Result::Success` is the only code with which an output may
/// be used; how the text is read is known to this folder alone.
namespace tarnelLib::controller {

using diagnostics::Oddities;

/// Reads the object under "D" with `readContent`. Whatever that finds, a text that is no JSON object is no request.
/// What looks like a mistake in it is noted in `oddities`, here and below, if that is not null.
template <class ReadContent>
Result readEnvelope(std::u16string_view text, Oddities *oddities, ReadContent &&readContent)
{
    JsonReader json(text);
    if (json.type() != JsonReader::Type::Object)
        return Result::InvalidArgument;
    Result result = Result::InvalidRequest;
    json.readObject([&](std::u16string_view key) {
        if (key != u"D") {
            json.skip();
        } else if (json.type() != JsonReader::Type::Object) {
            json.skip();
            result = Result::InvalidRequest;
        } else {
            result = readContent(json);
        }
    });
    if (oddities != nullptr)
        *oddities = json.oddities;
    return json.isComplete() ? result : Result::InvalidArgument;
}

/// The keys under which a request by identifier names the parents and the record.
template <class Record>
constexpr auto identifierKeys()
{
    std::array<std::string_view, parentCount<Record> + 1> keys{};
    std::size_t position = 0;
    forEachField<Record>([&](const auto &field) {
        if constexpr (requires { field.requestKey; })
            keys.at(position++) = field.requestKey;
        else if constexpr (requires { field.keys; })
            keys.at(position++) = field.keys.deleteKey;
    });
    return keys;
}

/// `{"D": {"items": [record, ...]}}`, with at least one record.
template <class Record>
[[nodiscard]] Result parseAddItems(std::u16string_view text, std::vector<Record> &records, Oddities *oddities = nullptr)
{
    return readEnvelope(text, oddities, [&](JsonReader &json) {
        Result result = Result::InvalidRequest;
        json.readObject([&](std::u16string_view key) {
            if (key != u"items") {
                json.skip();
                return;
            }
            const bool isArray = json.type() == JsonReader::Type::Array;
            const bool isAccepted = readValue(json, records) != Reading::Wrong;
            result = isAccepted ? Result::Success : Result::InvalidRequest;
            if (isArray && records.empty())
                result = Result::InvalidArgument;
        });
        return result;
    });
}

/// `{"D": record}`, where a record with parents names them beside its fields.
template <class Record>
[[nodiscard]] Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record,
                                          ParentIds<Record> &parents, Oddities *oddities = nullptr)
{
    return readEnvelope(text, oddities, [&](JsonReader &json) {
        return RecordReader<Record>::read(json, record.emplace(), &parents) ? Result::Success : Result::InvalidRequest;
    });
}

/// `{"D": {key: identifier}}`, with the delete key of the kind, and of its parents. The type of an identifier is not
/// looked at: what is no number reads as 0.
template <class Record>
[[nodiscard]] Result parseDelete(std::u16string_view text, Identifiers<Record> &identifiers,
                                 Oddities *oddities = nullptr)
{
    return readEnvelope(text, oddities, [&](JsonReader &json) {
        const auto keys = identifierKeys<Record>();
        std::array<bool, keys.size()> isFound{};
        json.readObject([&](std::u16string_view key) {
            const auto isKey = [&](std::string_view expected) { return std::ranges::equal(key, expected); };
            const auto position = static_cast<std::size_t>(std::ranges::find_if(keys, isKey) - keys.begin());
            quint32 unused = 0;
            quint32 &identifier = position < keys.size() ? identifiers.at(position) : unused;
            // What is no number reads as 0 here, other than in the records.
            const Reading reading = readValue(json, identifier);
            if (position == keys.size())
                return;
            isFound.at(position) = true;
            if (reading != Reading::Fine)
                json.oddities.add(Schema<Record>::table, keys.at(position), reading);
        });
        return std::ranges::all_of(isFound, std::identity()) ? Result::Success : Result::InvalidRequest;
    });
}

} // namespace tarnelLib::controller
