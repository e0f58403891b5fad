#include "model.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace model {

namespace {

std::string quoted(const std::string &text)
{
    std::string result = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\')
            result += '\\';
        if (unit == '\n')
            result += "\\n";
        else
            result += unit;
    }
    return result + '"';
}

/// One text per item, between brackets.
template <class Items, class ToText>
std::string joined(const char *brackets, const Items &items, ToText &&toText)
{
    std::string result(1, brackets[0]);
    for (const auto &item : items)
        result.append(result.size() > 1 ? "," : "").append(toText(item));
    result.push_back(brackets[1]);
    return result;
}

double numberIn(const Record &record, const std::string &key)
{
    const auto found = record.find(key);
    const double *number = found == record.end() ? nullptr : std::get_if<double>(&found->second);
    return number == nullptr ? 0 : *number;
}

bool isEqual(const Value &one, const Value &other)
{
    return json(one) == json(other);
}

bool isMatching(const Record &row, const Record &match)
{
    return std::ranges::all_of(match, [&](const auto &wanted) {
        const auto found = row.find(wanted.first);
        return found != row.end() && isEqual(found->second, wanted.second);
    });
}

double unsignedOf(double number)
{
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(number));
}

/// The integer reading that gives up on what is no whole number within 32 bits.
double signedOf(double number)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return number == std::trunc(number) && number >= Limits::min() && number <= Limits::max() ? number : 0;
}

std::optional<Record> parsed(const Kind &kind, const Value &value, std::optional<double> givenId = {});

/// A value of a request as it is stored; nothing if it is of a wrong type.
std::optional<Value> parsed(const Field &field, const Value &value, double owner)
{
    const auto *number = std::get_if<double>(&value);
    const auto read = [&](auto &&convert) { return number ? std::optional<Value>(convert(*number)) : std::nullopt; };
    const auto nested = [&](const Value &object, std::optional<double> id) {
        const auto record = parsed(*field.other, object, id);
        return record ? std::optional<Value>(*record) : std::nullopt;
    };
    switch (field.type) {
    case Type::Text:
        return std::holds_alternative<std::string>(value) ? std::optional(value) : std::nullopt;
    case Type::Unsigned:
        return read(unsignedOf);
    case Type::Signed:
        return read(signedOf);
    case Type::Byte:
        return read([](double all) { return double(static_cast<std::uint8_t>(static_cast<int>(signedOf(all)))); });
    case Type::Flag: // The integer reading makes 0 of either boolean.
        return std::holds_alternative<bool>(value) ? 0.0 : read([](double all) { return double(signedOf(all) != 0); });
    case Type::Wide:
        return read([](double all) { return std::trunc(all); });
    case Type::Nested:
        return field.oddity == Oddity::WholeInRequest ? nested(value, {}) : read(unsignedOf);
    case Type::Attached:
        return nested(value, owner);
    case Type::Children:
    case Type::Numbers: {
        const auto *items = std::get_if<List>(&value);
        List result;
        for (const Value &item : items ? *items : List{}) {
            static const Field plainNumber{"", Type::Unsigned, {}};
            const auto part = field.type == Type::Children ? nested(item, {}) : parsed(plainNumber, item, 0);
            if (!part)
                return std::nullopt;
            result.push_back(*part);
        }
        return items ? std::optional<Value>(result) : std::nullopt;
    }
    default:
        return read([](double all) { return all; });
    }
}

std::optional<Record> parsed(const Kind &kind, const Value &value, std::optional<double> givenId)
{
    const auto *object = std::get_if<Record>(&value);
    if (object == nullptr)
        return std::nullopt;
    auto id = object->find(kind.id);
    if (id == object->end())
        id = object->find(kind.alternative);
    if (!givenId && (id == object->end() || !std::holds_alternative<double>(id->second)))
        return std::nullopt;
    const double identifier = givenId ? *givenId : unsignedOf(std::get<double>(id->second));
    Record result{{kind.id, identifier}};
    for (const Field &field : kind.fields) {
        const auto member = object->find(field.key);
        if (member == object->end() || field.type == Type::Joined || field.type == Type::Lent)
            continue;
        const auto read = parsed(field, member->second, identifier);
        if (!read)
            return std::nullopt;
        result.emplace(field.key, *read);
    }
    return result;
}

/// The object under "D", or the code that refuses the request.
std::variant<Record, unsigned> contentOf(const Value &request)
{
    const auto *envelope = std::get_if<Record>(&request);
    if (envelope == nullptr)
        return 10U;
    const auto found = envelope->find("D");
    const auto *content = found == envelope->end() ? nullptr : std::get_if<Record>(&found->second);
    if (content == nullptr)
        return 5U;
    return *content;
}

/// What names the parts of a record.
Record asParent(const Kind &kind, const Record &row)
{
    Record result{{kind.asParent, row.at(kind.id)}};
    for (const std::string &parent : kind.parents)
        result.emplace(parent, row.at(parent));
    return result;
}

Record matchOf(const Kind &kind, const std::vector<unsigned> &ids)
{
    std::vector<std::string> keys = kind.parents;
    keys.push_back(kind.id);
    Record match;
    for (std::size_t i = 0; i < ids.size(); ++i)
        match.emplace(keys.at(i), double(ids[i]));
    return match;
}

/// Whether a stored value equals a text: numbers as numbers, texts as they are.
bool isEqualToText(const Value &stored, const std::string &text)
{
    if (const auto *number = std::get_if<double>(&stored)) {
        char *end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        return !text.empty() && *end == '\0' && value == *number;
    }
    return isEqual(stored, text);
}

} // namespace

std::string json(const Value &value)
{
    char number[32];
    switch (value.index()) {
    case 1:
        return std::get<bool>(value) ? "true" : "false";
    case 2:
        std::snprintf(number, sizeof number, "%.17g", std::get<double>(value));
        return number;
    case 3:
        return quoted(std::get<std::string>(value));
    case 4:
        return joined("[]", std::get<List>(value), json);
    case 5:
        return joined("{}", std::get<Record>(value),
                      [](const auto &member) { return quoted(member.first) + ":" + json(member.second); });
    default:
        return "null";
    }
}

std::string text(std::vector<std::string> records, bool isOrdered)
{
    if (!isOrdered)
        std::ranges::sort(records);
    std::string result;
    for (const std::string &record : records)
        result += record + "\n";
    return result;
}

Outcome Model::call(const Call &call)
{
    const Kind &kind = *call.operation->kind;
    const Verb verb = call.operation->verb;
    if (call.isOccupied && verb != Verb::RemoveFlag)
        return {10, {}};
    switch (verb) {
    case Verb::Add:
    case Verb::AddEvents:
        return add(call);
    case Verb::AddOne:
    case Verb::Update:
    case Verb::UpdateVersion:
    case Verb::Delete:
    case Verb::RemoveFlag: {
        const auto content = contentOf(call.request);
        if (const auto *code = std::get_if<unsigned>(&content))
            return {*code, {}};
        const Record &record = std::get<Record>(content);
        if (verb == Verb::Delete)
            return remove(kind, record);
        if (verb == Verb::RemoveFlag)
            return removeFlag(record);
        if (verb != Verb::AddOne)
            return update(kind, record, verb == Verb::UpdateVersion);
        const auto item = parsed(kind, record);
        if (!item)
            return {5, {}};
        store(kind, *item, {}, true);
        return {0, json(view(kind, *row(kind, {{kind.id, item->at(kind.id)}})))};
    }
    case Verb::Get: {
        const Record *found = row(kind, matchOf(kind, call.ids));
        return found ? Outcome{0, json(view(kind, *found))} : Outcome{8, {}};
    }
    case Verb::All:
        return handOut(kind, rows(kind, matchOf(kind, call.ids)));
    case Verb::Filter: {
        const auto field = std::ranges::find(kind.fields, call.field, &Field::key);
        if (call.field != kind.id &&
            (field == kind.fields.end() || field->oddity == Oddity::NoFilter || (field->type >= Type::Attached)))
            return {10, {}};
        Rows found = rows(kind, matchOf(kind, call.ids));
        std::erase_if(found, [&](const Record *row) {
            const auto stored = row->find(call.field);
            return stored == row->end() || !isEqualToText(stored->second, call.value);
        });
        return handOut(kind, found);
    }
    case Verb::Range:
        return handOut(kind, eventsOfKnownDevices([&](const Record &event) {
                           return event.contains("time") && numberIn(event, "time") >= call.ids[0] &&
                                  numberIn(event, "time") <= call.ids[1];
                       }));
    case Verb::Affects:
        return handOut(kind, eventsOfKnownDevices([](const Record &event) { return numberIn(event, "affect") == 1; }));
    case Verb::NameAndAddress: {
        const Record *found = row(kind, matchOf(kind, call.ids));
        if (found == nullptr)
            return {8, {}};
        const auto member = [&](const char *key) { return found->contains(key) ? found->at(key) : Value(); };
        return {0, json(List{member("name"), member("address_text")})};
    }
    case Verb::SetServer:
        m_server = call.text;
        return {};
    case Verb::GetServer:
        return {0, m_server};
    case Verb::Prune:
        prune(call.ids[0]);
        return {};
    case Verb::ClearExceptEvents:
        std::erase_if(m_tables, [](const auto &table) { return table.first != "Events"; });
        return {};
    case Verb::ClearAll:
        m_tables.clear();
        return {};
    case Verb::Relaunch:
        return {0, "0 255 255"};
    }
    return {};
}

Outcome Model::add(const Call &call)
{
    const Kind &kind = *call.operation->kind;
    const auto content = contentOf(call.request);
    if (const auto *code = std::get_if<unsigned>(&content))
        return {*code, {}};
    const auto &record = std::get<Record>(content);
    const auto found = record.find("items");
    const auto *items = found == record.end() ? nullptr : std::get_if<List>(&found->second);
    if (items == nullptr || items->empty())
        return {items == nullptr ? 5U : 10U, {}};
    std::vector<Record> records;
    for (const Value &item : *items) {
        const auto read = parsed(kind, item);
        if (!read)
            return {5, {}};
        records.push_back(*read);
    }
    std::set<double> ids;
    for (const Record &item : records) {
        store(kind, item, {}, true);
        ids.insert(numberIn(item, kind.id));
    }
    if (call.operation->verb == Verb::Add)
        return {};
    return handOut(kind, eventsOfKnownDevices([&](const Record &event) { return ids.contains(numberIn(event, "id")); }),
                   true);
}

Outcome Model::update(const Kind &kind, const Record &content, bool isVersionAlone)
{
    Record match;
    for (const std::string &parent : kind.parents) {
        const auto found = content.find(parent);
        if (found == content.end() || !std::holds_alternative<double>(found->second))
            return {5, {}};
        match.emplace(parent, unsignedOf(std::get<double>(found->second)));
    }
    const auto record = parsed(kind, content);
    if (!record)
        return {5, {}};
    const Record parents = match;
    match.emplace(kind.id, record->at(kind.id));
    if (isVersionAlone) {
        const Record *stored = row(kind, match);
        if (stored == nullptr)
            return {8, {}};
        Record &device = m_tables.at(kind.table).at({numberIn(match, "id")});
        device.erase("config_version");
        if (record->contains("config_version"))
            device.emplace("config_version", record->at("config_version"));
    } else {
        store(kind, *record, parents, false);
    }
    if (parents.contains("section") &&
        !row(kindOf<client::api::Section>(), {{"device", parents.at("device")}, {"id", parents.at("section")}}))
        return {11, {}};
    if (parents.contains("device") && !row(kindOf<client::api::Device>(), {{"id", parents.at("device")}}))
        return {11, {}};
    return {0, json(view(kind, *row(kind, match)))};
}

Outcome Model::remove(const Kind &kind, const Record &content)
{
    std::vector<unsigned> ids;
    for (const std::string &key : kind.deleteKeys) {
        if (!content.contains(key))
            return {5, {}};
        ids.push_back(static_cast<unsigned>(unsignedOf(numberIn(content, key))));
    }
    const Record match = matchOf(kind, ids);
    const Record *stored = row(kind, match);
    if (stored == nullptr)
        return {8, {}};
    if (kind.table == "Organizations" && stored->contains("contact"))
        erase("Persons", {{"id", stored->at("contact")}});
    if (kind.table == "Sites")
        erase("Locations", match);
    for (const char *part : {"Sections", "Zones", "DeviceUsers", "Links"}) {
        if (kind.table == "Devices" || (kind.table == "Sections" && (*part == 'Z' || *part == 'L')))
            erase(part, asParent(kind, *stored));
    }
    erase(kind.table, match);
    return {};
}

Outcome Model::removeFlag(const Record &content)
{
    if (!content.contains("id"))
        return {5, {}};
    const Kind &kind = kindOf<client::api::Event>();
    auto &events = m_tables[kind.table];
    const auto event = events.find({unsignedOf(numberIn(content, "id"))});
    if (event == events.end())
        return {8, {}};
    event->second.insert_or_assign("affect", 0.0);
    return {0, json(view(kind, event->second))};
}

void Model::prune(unsigned date)
{
    std::erase_if(m_tables["Events"], [&](const auto &event) {
        return event.second.contains("time") && numberIn(event.second, "time") <= date &&
               event.second.contains("affect") && numberIn(event.second, "affect") == 0;
    });
}

void Model::store(const Kind &kind, const Record &record, const Record &parents, bool isWhole)
{
    Record identity = parents;
    identity.emplace(kind.id, record.at(kind.id));
    Key key;
    if (!kind.parents.empty())
        key.push_back(numberIn(parents, kind.parents.front()));
    key.push_back(numberIn(record, kind.id));
    Record &row = m_tables[kind.table][key];
    if (isWhole)
        row.clear();
    for (const auto &[name, value] : identity)
        row.insert_or_assign(name, value);
    for (const Field &field : kind.fields) {
        const auto found = record.find(field.key);
        if (found == record.end())
            continue;
        const auto *items = std::get_if<List>(&found->second);
        if (const auto *nested = std::get_if<Record>(&found->second)) {
            store(*field.other, *nested, {}, true);
            if (field.type == Type::Nested)
                row.insert_or_assign(field.key, nested->at("id"));
        } else if (items == nullptr) {
            row.insert_or_assign(field.key, found->second);
        } else if (isWhole) {
            for (const Value &item : *items) {
                if (field.type == Type::Children) {
                    store(*field.other, std::get<Record>(item), kind.asParent.empty() ? Record() : asParent(kind, row),
                          true);
                    continue;
                }
                const double section = std::get<double>(item);
                m_tables["Links"][{key[0], key[1], section}] = {
                    {"device", key[0]}, {"user", key[1]}, {"section", section}};
            }
        }
    }
}

void Model::erase(const std::string &table, const Record &match)
{
    std::erase_if(m_tables[table], [&](const auto &row) { return isMatching(row.second, match); });
}

Record Model::view(const Kind &kind, const Record &row, bool needsJoinedRows) const
{
    Record result{{kind.id, row.at(kind.id)}};
    const auto addItems = [&](const Field &field, List items) {
        if (!items.empty())
            result.emplace(field.key, std::move(items));
    };
    for (const Field &field : kind.fields) {
        if (field.type == Type::Lent) {
            if (const Value value = lentToEvent(row, field.key); !value.isAbsent())
                result.emplace(field.key, value);
        } else if (field.type == Type::Children && !kind.asParent.empty()) {
            List items;
            for (const Record *part : rows(*field.other, asParent(kind, row)))
                items.push_back(view(*field.other, *part));
            addItems(field, items);
        } else if (field.type == Type::Numbers) {
            List items;
            if (m_tables.contains("Links")) {
                for (const auto &[key, link] : m_tables.at("Links")) {
                    if (isMatching(link, {{"device", row.at("device")}, {"user", row.at(kind.id)}}))
                        items.push_back(link.at("section"));
                }
            }
            addItems(field, items);
        } else if (!field.by.empty() && row.contains(field.by)) {
            const bool isApart = field.oddity == Oddity::ReadApart;
            const Value &id = row.at(field.by);
            const Record *other = isApart && isEqual(id, 0.0) ? nullptr : this->row(*field.other, {{"id", id}});
            const bool needsRows = needsJoinedRows || kind.needsJoinedRows;
            if (other != nullptr)
                result.emplace(field.key, view(*field.other, *other, needsRows && !isApart));
            else if (field.oddity == Oddity::IdentifierAlone && !needsRows)
                result.emplace(field.key, Record{{"id", id}});
        } else if (field.by.empty() && row.contains(field.key)) {
            result.emplace(field.key, row.at(field.key));
        }
    }
    return result;
}

Value Model::lentToEvent(const Record &event, const std::string &name) const
{
    using namespace client::api;
    const auto field = [](const Record *row, const char *key) {
        return row && row->contains(key) ? row->at(key) : Value();
    };
    const Value device = field(&event, "device");
    const Value section = field(&event, "section");
    if (name == "DeviceAccount")
        return field(row(kindOf<Device>(), {{"id", device}}), "account");
    if (name == "SectionName")
        return field(row(kindOf<Section>(), {{"device", device}, {"id", section}}), "name");
    if (name == "ZoneName")
        return field(row(kindOf<Zone>(), {{"device", device}, {"section", section}, {"id", field(&event, "zone")}}),
                     "name");
    const Record *user = row(kindOf<User>(), {{"id", field(&event, "operator_id")}});
    return field(row(kindOf<Domain>(), {{"id", field(user, "domain")}}), "name");
}

Model::Rows Model::rows(const Kind &kind, const Record &match) const
{
    Rows result;
    if (!m_tables.contains(kind.table))
        return result;
    for (const auto &[key, row] : m_tables.at(kind.table)) {
        if (isMatching(row, match))
            result.push_back(&row);
    }
    return result;
}

const Record *Model::row(const Kind &kind, const Record &match) const
{
    const Rows found = rows(kind, match);
    return found.empty() ? nullptr : found.front();
}

Outcome Model::handOut(const Kind &kind, const Rows &rows, bool isOrdered) const
{
    std::vector<std::string> records;
    for (const Record *row : rows)
        records.push_back(json(view(kind, *row)));
    return rows.empty() ? Outcome{8, {}} : Outcome{0, text(records, isOrdered)};
}

Model::Rows Model::eventsOfKnownDevices(const std::function<bool(const Record &)> &isWanted) const
{
    Rows found = rows(kindOf<client::api::Event>(), {});
    std::erase_if(found, [&](const Record *event) {
        return !isWanted(*event) || !event->contains("device") ||
               !row(kindOf<client::api::Device>(), {{"id", event->at("device")}});
    });
    return found;
}

} // namespace model
