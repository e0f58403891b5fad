#include "model_value.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace model {

namespace {

Value valueIn(const Record *record, const std::string &key)
{
    return record != nullptr && record->contains(key) ? record->at(key) : Value();
}

/// 0 for what is no number.
double numberIn(const Record &record, const std::string &key)
{
    const Value value = valueIn(&record, key);
    const auto *number = std::get_if<double>(&value);
    return number == nullptr ? 0 : *number;
}

bool isMatching(const Record &row, const Record &match)
{
    return std::ranges::all_of(match, [&](const auto &wanted) {
        return row.contains(wanted.first) && json(row.at(wanted.first)) == json(wanted.second);
    });
}

/// Names a record, or the parts of a parent, by as many identifiers as there are.
Record matchOf(const Kind &kind, const std::vector<unsigned> &ids)
{
    std::vector<std::string> keys = kind.parents;
    keys.push_back(kind.id);
    Record match;
    for (std::size_t i = 0; i < ids.size(); ++i)
        match.emplace(keys.at(i), double(ids[i]));
    return match;
}

/// What names the parts of a record: only devices and sections have any in tables of their own.
Record asParent(const Kind &kind, const Record &row)
{
    Record result;
    if (kind.table == "Devices")
        result.emplace("device", row.at("id"));
    if (kind.table == "Sections")
        result = {{"device", row.at("device")}, {"section", row.at("id")}};
    return result;
}

/// Whether a stored value equals a text: numbers as numbers, texts as they are.
bool isEqualToText(const Value &stored, const std::string &text)
{
    if (const auto *number = std::get_if<double>(&stored)) {
        char *end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        return !text.empty() && *end == '\0' && value == *number;
    }
    return json(stored) == json(text);
}

} // namespace

Outcome Model::call(const Call &call)
try {
    if (call.isOccupied && call.operation->verb != Verb::RemoveFlag)
        return {10};
    return carryOut(call);
} catch (const Refusal &refusal) {
    return {refusal.code};
}

Outcome Model::carryOut(const Call &call)
{
    const Kind &kind = *call.operation->kind;
    const Verb verb = call.operation->verb;
    if (verb <= Verb::RemoveFlag) {
        const auto *envelope = std::get_if<Record>(&call.request);
        if (envelope == nullptr)
            return {10};
        const auto &content = as<Record>(member(*envelope, "D"));
        return verb <= Verb::AddOne   ? add(call, content)
               : verb == Verb::Update ? update(kind, content)
               : verb == Verb::Delete ? remove(kind, content)
                                      : removeFlag(kind, content);
    }
    const Record match = verb <= Verb::Filter || verb == Verb::Fields ? matchOf(kind, call.ids) : Record();
    const Record *found = row(kind.table, match);
    switch (verb) {
    case Verb::Get:
        return found ? Outcome{0, json(view(kind, *found))} : Outcome{8};
    case Verb::Fields:
        return found ? Outcome{0, json(List{valueIn(found, "name"), valueIn(found, "address_text")})} : Outcome{8};
    case Verb::All:
        return handOut(kind, rows(kind.table, match));
    case Verb::Filter: {
        const std::string &key = call.texts[0];
        const auto field = std::ranges::find(kind.fields, key, &Field::key);
        if (key != kind.id && (field == kind.fields.end() || !field->isInRequest() || field->type > Type::Nested ||
                               key == "location" || key == "cluster_id"))
            return {10};
        Rows filtered = rows(kind.table, match);
        std::erase_if(filtered, [&](const Record *row) {
            return !row->contains(key) || !isEqualToText(row->at(key), call.texts[1]);
        });
        return handOut(kind, filtered);
    }
    case Verb::Range:
        return handOutEvents(kind, [&](const Record &event) {
            const double time = numberIn(event, "time");
            return event.contains("time") && time >= call.ids[0] && time <= call.ids[1];
        });
    case Verb::Affects:
        return handOutEvents(kind, [](const Record &event) { return numberIn(event, "affect") == 1; });
    case Verb::Prune:
        std::erase_if(m_tables["Events"], [&](const auto &entry) {
            const Record &event = entry.second;
            return event.contains("time") && numberIn(event, "time") <= call.ids[0] && event.contains("affect") &&
                   numberIn(event, "affect") == 0;
        });
        return {};
    case Verb::SetServer:
        m_server = call.texts[0];
        return {};
    case Verb::GetServer:
        return {0, m_server.empty() ? "" : json(m_server)};
    case Verb::ClearExceptEvents:
        std::erase_if(m_tables, [](const auto &table) { return table.first != "Events"; });
        return {};
    case Verb::ClearAll:
        m_tables.clear();
        return {};
    default: // An exit and a launch, which leave the records as they are.
        return {0, "0 255 255"};
    }
}

Outcome Model::add(const Call &call, const Record &content)
{
    const Kind &kind = *call.operation->kind;
    if (call.operation->verb == Verb::AddOne) {
        const Record record = parsed(kind, content);
        store(kind, record, {}, true);
        return {0, json(view(kind, *row(kind.table, {{"id", record.at("id")}})))};
    }
    std::vector<Record> records;
    for (const Value &item : as<List>(member(content, "items")))
        records.push_back(parsed(kind, as<Record>(item)));
    if (records.empty())
        return {10};
    std::set<double> ids;
    for (const Record &record : records) {
        store(kind, record, {}, true);
        ids.insert(numberIn(record, kind.id));
    }
    if (kind.table != "Events")
        return {};
    return handOutEvents(
        kind, [&](const Record &event) { return ids.contains(numberIn(event, "id")); }, true);
}

Outcome Model::update(const Kind &kind, const Record &content)
{
    Record parents;
    for (const std::string &parent : kind.parents)
        parents.emplace(parent, unsignedOf(as<double>(member(content, parent))));
    const Record record = parsed(kind, content);
    Record match = parents;
    match.emplace(kind.id, record.at(kind.id));
    if (kind.table == "Devices") { // Nothing but the version, which none empties.
        if (row(kind.table, match) == nullptr)
            return {8};
        Record &device = m_tables.at(kind.table).at({numberIn(record, "id")});
        device.erase("config_version");
        if (record.contains("config_version"))
            device.emplace("config_version", record.at("config_version"));
    } else {
        store(kind, record, parents, false);
    }
    const Value device = valueIn(&parents, "device");
    const Value section = valueIn(&parents, "section");
    if ((!section.isAbsent() && !row("Sections", {{"device", device}, {"id", section}})) ||
        (!device.isAbsent() && !row("Devices", {{"id", device}})))
        return {11};
    return {0, json(view(kind, *row(kind.table, match)))};
}

Outcome Model::remove(const Kind &kind, const Record &content)
{
    std::vector<unsigned> ids;
    for (const std::string &key : kind.deleteKeys) {
        member(content, key);
        ids.push_back(static_cast<unsigned>(unsignedOf(numberIn(content, key))));
    }
    const Record match = matchOf(kind, ids);
    const Record *stored = row(kind.table, match);
    if (stored == nullptr)
        return {8};
    if (kind.table == "Organizations")
        erase("Persons", {{"id", valueIn(stored, "contact")}});
    if (kind.table == "Sites")
        erase("Locations", match);
    if (const Record parent = asParent(kind, *stored); !parent.empty()) {
        for (const char *parts : {"Sections", "Zones", "DeviceUsers", "Links"})
            erase(parts, parent);
    }
    erase(kind.table, match);
    return {};
}

Outcome Model::removeFlag(const Kind &kind, const Record &content)
{
    member(content, "id");
    auto &events = m_tables[kind.table];
    const auto event = events.find({unsignedOf(numberIn(content, "id"))});
    if (event == events.end())
        return {8};
    event->second.insert_or_assign("affect", 0.0);
    return {0, json(view(kind, event->second))};
}

/// Stores a record in its row: in place of what is there, or only the fields that it has.
void Model::store(const Kind &kind, const Record &record, const Record &parents, bool isWhole)
{
    Key key;
    if (!kind.parents.empty())
        key.push_back(numberIn(parents, kind.parents.front()));
    key.push_back(numberIn(record, kind.id));
    Record &row = m_tables[kind.table][key];
    if (isWhole)
        row.clear();
    for (const auto &[name, value] : parents)
        row.insert_or_assign(name, value);
    for (const auto &[name, value] : record) {
        if (const auto *nested = std::get_if<Record>(&value)) {
            const Field &field = *std::ranges::find(kind.fields, name, &Field::key);
            store(*field.other, *nested, {}, true);
            if (name == "contact")
                row.insert_or_assign(name, nested->at("id"));
        } else if (!std::holds_alternative<List>(value)) {
            row.insert_or_assign(name, value);
        }
    }
    for (const Field &field : kind.fields) {
        if (field.type != Type::Items || !record.contains(field.key) || !isWhole)
            continue;
        for (const Value &item : std::get<List>(record.at(field.key))) {
            if (field.other != nullptr)
                store(*field.other, std::get<Record>(item), asParent(kind, row), true);
            else
                m_tables["Links"][{key[0], key[1], std::get<double>(item)}] = {
                    {"device", key[0]}, {"user", key[1]}, {"section", item}};
        }
    }
}

void Model::erase(const std::string &table, const Record &match)
{
    std::erase_if(m_tables[table], [&](const auto &row) { return isMatching(row.second, match); });
}

/// A row as it is handed out. Where rows are needed, a locale that is not cached is no more than absent.
Record Model::view(const Kind &kind, const Record &row, bool needsRows) const
{
    needsRows = needsRows || kind.table == "Organizations" || kind.table == "Contracts" || kind.table == "Devices" ||
                kind.table == "Sites";
    Record result{{kind.id, row.at(kind.id)}};
    for (const Field &field : kind.fields) {
        Value value = field.isInRequest() ? valueIn(&row, field.key) : Value();
        const Record part = asParent(kind, row);
        if (field.type == Type::Nested) {
            // A site's domain is not joined: 0 names none, and it is as when it is read alone.
            const bool isReadApart = kind.table == "Sites" && field.key == "Domain";
            const Value id = valueIn(&row, field.by);
            const Record *other = this->row(field.other->table, {{"id", id}});
            value = Value();
            if (other != nullptr && !(isReadApart && numberIn(row, field.by) == 0))
                value = view(*field.other, *other, needsRows && !isReadApart);
            else if (field.key == "locale_id" && !id.isAbsent() && !needsRows)
                value = Record{{"id", id}};
        } else if (field.type == Type::Items && field.other == nullptr) {
            List sections;
            for (const Record *link : rows("Links", {{"device", row.at("device")}, {"user", row.at(kind.id)}}))
                sections.push_back(link->at("section"));
            value = sections.empty() ? Value() : sections;
        } else if (field.type == Type::Items && !part.empty()) {
            List parts;
            for (const Record *other : rows(field.other->table, part))
                parts.push_back(view(*field.other, *other));
            value = parts.empty() ? Value() : parts;
        } else if (!field.isInRequest()) {
            value = lentToEvent(row, field.key);
        }
        if (!value.isAbsent())
            result.emplace(field.key, std::move(value));
    }
    return result;
}

Value Model::lentToEvent(const Record &event, const std::string &name) const
{
    const Value device = valueIn(&event, "device");
    const Value section = valueIn(&event, "section");
    if (name == "DeviceAccount")
        return valueIn(row("Devices", {{"id", device}}), "account");
    if (name == "SectionName")
        return valueIn(row("Sections", {{"device", device}, {"id", section}}), "name");
    if (name == "ZoneName")
        return valueIn(row("Zones", {{"device", device}, {"section", section}, {"id", valueIn(&event, "zone")}}),
                       "name");
    if (name == "DomainName") {
        const Record *user = row("Users", {{"id", valueIn(&event, "operator_id")}});
        return valueIn(row("Domains", {{"id", valueIn(user, "domain")}}), "name");
    }
    return {};
}

Model::Rows Model::rows(const std::string &table, const Record &match) const
{
    Rows result;
    if (!m_tables.contains(table))
        return result;
    for (const auto &[key, row] : m_tables.at(table)) {
        if (isMatching(row, match))
            result.push_back(&row);
    }
    return result;
}

const Record *Model::row(const std::string &table, const Record &match) const
{
    const Rows found = rows(table, match);
    return found.empty() ? nullptr : found.front();
}

Outcome Model::handOut(const Kind &kind, const Rows &rows, bool isOrdered) const
{
    std::vector<std::string> records;
    for (const Record *row : rows)
        records.push_back(json(view(kind, *row)));
    return rows.empty() ? Outcome{8} : Outcome{0, textOf(records, isOrdered)};
}

/// The events that are wanted and whose device is in the cache.
Outcome Model::handOutEvents(const Kind &kind, const std::function<bool(const Record &)> &isWanted,
                             bool isOrdered) const
{
    Rows found = rows(kind.table, {});
    std::erase_if(found, [&](const Record *event) {
        return !isWanted(*event) || !row("Devices", {{"id", valueIn(event, "device")}});
    });
    return handOut(kind, found, isOrdered);
}

} // namespace model
