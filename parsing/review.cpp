#include "parsing/review.h"

#include "diagnostics/reason.h"

#include <QLoggingCategory>

namespace tarnelLib::controller {

namespace {

using diagnostics::suspicions;

/// Client programs log at their very end, too.
const QLoggingCategory &category()
{
    static const auto &requests = *new QLoggingCategory("tarnel.requests", QtWarningMsg);
    return requests;
}

/// A part of a request, short enough for a line.
std::string shown(std::u16string_view units)
{
    constexpr std::size_t limit = 40;
    diagnostics::FixedText<8 * limit> text;
    text.append(units.substr(0, limit));
    text.append(units.size() > limit ? "..." : "");
    return std::string(text.view());
}

std::string quoted(std::string_view key)
{
    return std::string("\"").append(key).append("\"");
}

/// Where the reading is: a key in an object, or an item of the list under the key.
struct Place {
    const Place *outer;
    std::string_view key;
    std::optional<std::size_t> item = {};

    [[nodiscard]] std::string path() const
    {
        std::string path = outer != nullptr ? outer->path() + "." : std::string();
        path += key;
        return item ? path + "[" + std::to_string(*item) + "]" : path;
    }

    [[nodiscard]] std::string name() const { return outer == nullptr && !item ? quoted(key) : path(); }
};

/// Readers say why what they read is refused, which is nothing for what is accepted.
class Review
{
public:
    enum class For { Reason, Warnings };

    Review(const Request &request, For purpose) : m_request(request), m_purpose(purpose), m_json(request.text) {}

    std::string read()
    {
        if (m_json.type() != JsonReader::Type::Object)
            return m_request.text.empty() ? "the text is empty" : "the text is no JSON object";
        std::string reason = "\"D\" is missing";
        m_json.readObject([&](std::u16string_view key) {
            if (key != u"D")
                m_json.skip();
            else if (m_json.type() != JsonReader::Type::Object)
                reason = passWrong(quoted("D"), "an object");
            else
                reason = m_request.form == Form::Items ? readItems() : readRecord(m_request.shape(), nullptr);
        });
        return m_json.isComplete() ? reason : m_json.error();
    }

private:
    using Type = JsonReader::Type;

    std::string readItems()
    {
        std::string reason = "\"items\" is missing";
        m_json.readObject([&](std::u16string_view key) {
            if (key != u"items") {
                m_json.skip();
                return;
            }
            bool isEmpty = true;
            reason = readList({nullptr, "items"}, [&](const Place &item) {
                isEmpty = false;
                return readObject(m_request.shape(), item);
            });
            if (isEmpty && reason.empty())
                reason = "\"items\" is empty";
        });
        return reason;
    }

    template <class ReadItem>
    std::string readList(Place place, ReadItem &&readItem)
    {
        if (m_json.type() != Type::Array)
            return passWrong(place.name(), "an array");
        std::string first;
        place.item = 0;
        m_json.readArray([&] {
            const std::string reason = readItem(place);
            if (first.empty())
                first = reason;
            ++*place.item;
        });
        return first;
    }

    std::string readObject(const Shape &shape, const Place &place)
    {
        return m_json.type() == Type::Object ? readRecord(shape, &place) : passWrong(place.name(), "an object");
    }

    /// What one record has been found to hold.
    struct Record {
        const Shape &shape;
        const Place *place; ///< Null for the object under "D".
        std::vector<const Shape::Member *> found = {};
        std::vector<std::pair<const Shape::Member *, std::string>> wrong = {}; ///< With the last value of each.
        std::string id = {};
        std::vector<std::string> warnings = {};
    };

    std::string readRecord(const Shape &shape, const Place *place)
    {
        Record record{shape, place};
        m_json.readObject([&](std::u16string_view key) {
            const auto isKey = [&](const Shape::Member &each) {
                return !each.key.empty() && std::ranges::equal(key, each.key);
            };
            const auto member = std::ranges::find_if(shape.members, isKey);
            if (member == shape.members.end()) {
                if (m_request.form != Form::Identifiers)
                    suspect(record, key, Reading::UnknownKey,
                            "no field of " + std::string(shape.kind) + " has this key");
                m_json.skip();
            } else if (isNeeded(*member, place)) {
                record.found.push_back(&*member);
                std::erase_if(record.wrong, [&](const auto &earlier) { return earlier.first == &*member; });
                if (std::string reason = readMember(record, *member); !reason.empty())
                    record.wrong.emplace_back(&*member, std::move(reason));
            } else {
                m_json.skip();
            }
        });
        warn(record);
        return firstMistake(record);
    }

    /// Parents are named by the object under "D" of requests for one record alone.
    [[nodiscard]] bool isNeeded(const Shape::Member &member, const Place *place) const
    {
        return member.role != Shape::Role::Parent || (m_request.form == Form::Record && place == nullptr);
    }

    std::string firstMistake(const Record &record) const
    {
        const auto isFound = [&](Shape::Role role) {
            return std::ranges::find(record.found, role, &Shape::Member::role) != record.found.end();
        };
        for (const auto &[member, reason] : record.wrong) {
            if (member->role != Shape::Role::AlternativeId || !isFound(Shape::Role::Id))
                return reason;
        }
        for (const Shape::Member &member : record.shape.members) {
            const bool isReplaced = member.role == Shape::Role::Id && isFound(Shape::Role::AlternativeId);
            if (!member.key.empty() && member.isRequired() && !isReplaced && isNeeded(member, record.place) &&
                std::ranges::find(record.found, &member) == record.found.end())
                return Place{record.place, member.key}.name() + ": missing";
        }
        return {};
    }

    std::string readMember(Record &record, const Shape::Member &member)
    {
        const Place place{record.place, member.key};
        const auto readOne = [&](const Place &own) {
            return member.object != nullptr ? readObject(member.object(), own) : readValue(record, member, own);
        };
        return member.isList ? readList(place, readOne) : readOne(place);
    }

    std::string readValue(Record &record, const Shape::Member &member, const Place &place)
    {
        const std::u16string_view before = m_json.rest();
        const Type type = m_json.type();
        std::string stored;
        const Reading reading = member.read(m_json, stored);
        const bool isId = member.role == Shape::Role::Id || member.role == Shape::Role::AlternativeId;
        if (reading == Reading::Fine && !isId)
            return {};
        const std::string value = describeRead(before, type);
        if (isId && reading != Reading::Wrong)
            record.id = stored;
        if (reading == Reading::Wrong && member.role != Shape::Role::DeletedId)
            return place.name() + ": " + value + ", " + member.expected + " is expected";
        if (reading == Reading::TrueForFlag)
            suspect(record, member.key, reading, value + " is stored as false; 1 is meant?");
        else if (member.role == Shape::Role::DeletedId && reading != Reading::Fine)
            suspect(record, member.key, reading, value + " is read as " + stored);
        else if (reading != Reading::Fine)
            suspect(record, member.key, reading, value + " is stored as " + stored);
        return {};
    }

    std::string passWrong(const std::string &name, const std::string &expected)
    {
        const std::u16string_view before = m_json.rest();
        const Type type = m_json.type();
        m_json.skip();
        return name + ": " + describeRead(before, type) + ", " + expected + " is expected";
    }

    /// The value that was read from there on.
    [[nodiscard]] std::string describeRead(std::u16string_view before, Type type) const
    {
        if (type == Type::Object)
            return "an object";
        if (type == Type::Array)
            return "an array";
        const std::u16string_view value = before.substr(0, before.size() - m_json.rest().size());
        return shown(value.substr(0, value.find_last_not_of(u" \t\r\n") + 1));
    }

    template <class Unit>
    void suspect(Record &record, std::basic_string_view<Unit> key, Reading reading, const std::string &what)
    {
        if (m_purpose == For::Warnings && suspicions.tell(diagnostics::mistake(record.shape.kind, key, reading)))
            record.warnings.push_back(quoted(shown(std::u16string(key.begin(), key.end()))) + ": " + what);
    }

    void warn(const Record &record) const
    {
        std::string name;
        if (record.place != nullptr || !record.id.empty())
            name = record.place != nullptr ? record.place->path() : quoted("D");
        if (!record.id.empty())
            name += " (id " + record.id + ")";
        for (const std::string &warning : record.warnings)
            qCWarning(category, "%s: %s%s%s", m_request.function, name.c_str(), name.empty() ? "" : ": ",
                      warning.c_str());
    }

    const Request &m_request;
    For m_purpose;
    JsonReader m_json;
};

} // namespace

void noteRefusal(const Request &request) noexcept
{
    try {
        // Nothing where this reader and the real one do not agree: then the code speaks for itself.
        if (const std::string reason = Review(request, Review::For::Reason).read(); !reason.empty())
            diagnostics::note(reason);
    } catch (const std::bad_alloc &) {
        static_cast<void>(diagnostics::takeDetail());
    }
}

void warnOf(const Request &request, const Oddities &oddities) noexcept
{
    suspicions.count(oddities.count);
    try {
        if (oddities.areSomeNew && category().isWarningEnabled())
            static_cast<void>(Review(request, Review::For::Warnings).read());
    } catch (const std::bad_alloc &) {
        return; // They are counted.
    }
}

} // namespace tarnelLib::controller
