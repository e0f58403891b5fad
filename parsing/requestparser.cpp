#include "parsing/requestparser.h"

#include <algorithm>
#include <functional>

namespace tarnelLib::controller {

namespace {

/// Reads the object under "D" with `readContent`. Whatever that finds, a text that is no JSON object is no request.
template <class ReadContent>
Result readEnvelope(std::u16string_view text, ReadContent &&readContent)
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
    return json.isComplete() ? result : Result::InvalidArgument;
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

} // namespace

template <class Record>
Result parseAddItems(std::u16string_view text, std::vector<Record> &records)
{
    return readEnvelope(text, [&](JsonReader &json) {
        Result result = Result::InvalidRequest;
        json.readObject([&](std::u16string_view key) {
            if (key != u"items") {
                json.skip();
                return;
            }
            const bool isArray = json.type() == JsonReader::Type::Array;
            const bool isAccepted = readItems(json, records);
            result = isAccepted ? Result::Success : Result::InvalidRequest;
            if (isArray && records.empty())
                result = Result::InvalidArgument;
        });
        return result;
    });
}

template <class Record>
Result parseAddOrUpdateItem(std::u16string_view text, std::optional<Record> &record, ParentIds<Record> &parents)
{
    return readEnvelope(text, [&](JsonReader &json) {
        return RecordReader<Record>::read(json, record.emplace(), parents) ? Result::Success : Result::InvalidRequest;
    });
}

template <class Record>
Result parseDelete(std::u16string_view text, Identifiers<Record> &identifiers)
{
    return readEnvelope(text, [&](JsonReader &json) {
        const auto keys = identifierKeys<Record>();
        std::array<bool, keys.size()> isFound{};
        json.readObject([&](std::u16string_view key) {
            const auto isKey = [&](std::string_view expected) {
                return std::equal(key.begin(), key.end(), expected.begin(), expected.end());
            };
            const auto position =
                static_cast<std::size_t>(std::find_if(keys.begin(), keys.end(), isKey) - keys.begin());
            quint32 unused = 0;
            quint32 &identifier = position < keys.size() ? identifiers.at(position) : unused;
            // What is no number reads as 0 here, other than in the records.
            static_cast<void>(readValue(json, identifier));
            if (position < keys.size())
                isFound.at(position) = true;
        });
        return std::ranges::all_of(isFound, std::identity()) ? Result::Success : Result::InvalidRequest;
    });
}

Result parseRemoveAffectEvent(std::u16string_view text, quint32 &id)
{
    Identifiers<Event> identifiers{};
    const Result result = parseDelete<Event>(text, identifiers);
    id = identifiers.front();
    return result;
}

template Result parseAddItems(std::u16string_view, std::vector<Locale> &);
template Result parseAddItems(std::u16string_view, std::vector<Domain> &);
template Result parseAddItems(std::u16string_view, std::vector<User> &);
template Result parseAddItems(std::u16string_view, std::vector<Organization> &);
template Result parseAddItems(std::u16string_view, std::vector<Contractor> &);
template Result parseAddItems(std::u16string_view, std::vector<Contract> &);
template Result parseAddItems(std::u16string_view, std::vector<Device> &);
template Result parseAddItems(std::u16string_view, std::vector<Site> &);
template Result parseAddItems(std::u16string_view, std::vector<Event> &);

template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Domain> &, ParentIds<Domain> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<User> &, ParentIds<User> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Organization> &, ParentIds<Organization> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Contractor> &, ParentIds<Contractor> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Contract> &, ParentIds<Contract> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Device> &, ParentIds<Device> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Section> &, ParentIds<Section> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Zone> &, ParentIds<Zone> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Site> &, ParentIds<Site> &);
template Result parseAddOrUpdateItem(std::u16string_view, std::optional<Event> &, ParentIds<Event> &);

template Result parseDelete<Domain>(std::u16string_view, Identifiers<Domain> &);
template Result parseDelete<User>(std::u16string_view, Identifiers<User> &);
template Result parseDelete<Organization>(std::u16string_view, Identifiers<Organization> &);
template Result parseDelete<Contractor>(std::u16string_view, Identifiers<Contractor> &);
template Result parseDelete<Contract>(std::u16string_view, Identifiers<Contract> &);
template Result parseDelete<Device>(std::u16string_view, Identifiers<Device> &);
template Result parseDelete<Section>(std::u16string_view, Identifiers<Section> &);
template Result parseDelete<Zone>(std::u16string_view, Identifiers<Zone> &);
template Result parseDelete<Site>(std::u16string_view, Identifiers<Site> &);

} // namespace tarnelLib::controller
