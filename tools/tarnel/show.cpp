#include "tools/tarnel/cachefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/records.h"

#include <algorithm>

namespace tool {

namespace {

/// What the command line asks for.
struct ShowOptions {
    std::string kind;
    std::vector<quint32> ids;
    std::string condition; ///< KEY=VALUE
};

/// Kinds of which a client can read lists or records.
template <class Record>
constexpr bool isShown = false;
template <class Record>
requires requires
{
    tarnel::Functions<lib::ApiOf<Record>>::free;
}
constexpr bool isShown<Record> = true;

template <class Record>
constexpr bool isEvent = std::is_same_v<Record, lib::Event>;

/// Whether a word names a kind: "user", "users", "Users".
template <class Record>
bool isNamed(std::string_view word)
{
    const auto isSame = [&](std::string_view name) {
        return std::ranges::equal(
            word, name, {}, [](unsigned char c) { return std::tolower(c); },
            [](unsigned char c) { return std::tolower(c); });
    };
    return isSame(lib::Schema<Record>::table) || isSame(kindName<Record>);
}

std::string allKinds()
{
    std::string names;
    forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
        if constexpr (isShown<Record>)
            names += fmt::format("{}{}", names.empty() ? "" : ", ", lowered(lib::Schema<Record>::table));
    });
    return names;
}

template <class Record>
const lib::ModelField &filterField(const std::string &key)
{
    if (const lib::ModelField *const field = lib::toTableField<Record>(tarnel::utf16(key)))
        return *field;
    std::string known;
    for (const lib::ModelField &field : lib::modelFields<Record>)
        known += field.key.empty() ? "" : fmt::format("{}{}", known.empty() ? "" : ", ", field.key);
    throw Obstacle(fmt::format("{} have no field \"{}\" to filter by", lowered(lib::Schema<Record>::table), key),
                   fmt::format("the fields are {}: --where {}=…", known, lib::modelFields<Record>.back().key));
}

/// How the identifiers that a command has to name are called: "DEVICE SECTION".
template <class Record>
std::string identifierNames()
{
    std::string names;
    for (const lib::ModelField &field : lib::firstColumns<Record>(lib::parentCount<Record>)) {
        for (const char letter : field.field.substr(0, field.field.size() - 2)) // Without "Id".
            names += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        names += ' ';
    }
    return names;
}

/// What lists the records beside one: "zones 7 1".
template <class Record>
std::string listing(lib::Numbers ids)
{
    const lib::Numbers parents = ids.first(std::min(ids.size(), lib::parentCount<Record>));
    return fmt::format("{}{}{}", lowered(lib::Schema<Record>::table), parents.empty() ? "" : " ",
                       fmt::join(parents, " "));
}

/// What the library finds by a question.
template <class Record, class Ask>
Json ask(const Ask &ask)
{
    lib::Structures<Record> found;
    if (!ask(found))
        throw Obstacle("the file cannot be read", "`tarnel check` says what is wrong with it");
    Json records = Json::array();
    for (const auto &structure : found.all())
        records.push_back(toJson<Record>(structure));
    return records;
}

template <class Record>
Json readOne(lib::Connection &connection, lib::Numbers ids)
{
    Json found = ask<Record>([&](auto &structures) {
        if constexpr (isEvent<Record>)
            return connection.readOne(lib::Table<lib::Event>::prepareGetById(connection, ids.front()), structures,
                                      nullptr);
        else
            return lib::Table<Record>::getOne(connection, structures, ids);
    });
    if (found.empty())
        throw Obstacle(fmt::format("there is no {} {}", lowered(kindName<Record>), fmt::join(ids, " ")),
                       isEvent<Record> ? "`tarnel events --last 20` lists some"
                                       : fmt::format("`tarnel show {}` lists them", listing<Record>(ids)));
    return found;
}

/// Reads what a client would be handed out.
template <class Record>
Json read(lib::Connection &connection, const ShowOptions &options)
{
    constexpr std::size_t parents = lib::parentCount<Record>;
    const lib::Numbers ids = options.ids;
    const std::string word = lowered(lib::Schema<Record>::table);
    if (parents > 0 && (ids.empty() || ids.size() > parents + 1))
        throw Obstacle(fmt::format("{} are numbered within their device", word),
                       fmt::format("tarnel show {} {}[ID]", word, identifierNames<Record>()));
    const bool areRecordsNamed = parents > 0 ? ids.size() > parents : !ids.empty();
    if (areRecordsNamed && !options.condition.empty())
        throw Obstacle("records are asked for by identifiers, or by --where, not by both",
                       fmt::format("tarnel show {} --where {}", listing<Record>(ids), options.condition));
    if constexpr (parents == 0) {
        Json records = Json::array();
        for (const quint32 id : ids)
            records.push_back(std::move(readOne<Record>(connection, {&id, 1}).front()));
        if (!ids.empty())
            return records;
    } else if (areRecordsNamed) {
        return readOne<Record>(connection, ids);
    }
    if constexpr (isEvent<Record>) {
        throw Obstacle("events are listed by a command of their own", "tarnel events --last 20");
    } else {
        const std::size_t split = options.condition.find('=');
        if (options.condition.empty())
            return ask<Record>([&](auto &found) { return lib::Table<Record>::get(connection, found, ids); });
        const std::u16string value = tarnel::utf16(options.condition.substr(split + 1));
        const lib::ModelField &field = filterField<Record>(options.condition.substr(0, split));
        return ask<Record>(
            [&](auto &found) { return lib::Table<Record>::getByField(connection, found, field, value, ids); });
    }
}

std::string shown(const Json &value)
{
    return value.is_string() ? output::safe(value.get<std::string>()) : value.dump();
}

/// Writes a record with all that belongs to it, one member below the other.
void writeTree(const Json &record, std::size_t depth)
{
    const std::string indent(depth * 2, ' ');
    const auto writeItem = [&](const Json &item) {
        output::print("{}-\n", indent + "  ");
        writeTree(item, depth + 2);
    };
    for (const auto &[key, value] : record.items()) {
        const std::string name = output::styled(fmt::emphasis::bold, key);
        const bool isList = value.is_array() && !value.empty() && value.front().is_object();
        if (value.is_object() || isList)
            output::print("{}{}\n", indent, name);
        else
            output::print("{}{}  {}\n", indent, name, shown(value));
        if (isList)
            std::ranges::for_each(value, writeItem);
        else if (value.is_object())
            writeTree(value, depth + 1);
    }
}

/// Writes records in lines, with their own members that any of them has in columns.
void writeTable(const Json &records)
{
    constexpr std::size_t most = 32;
    std::vector<std::string> keys;
    for (const Json &record : records) {
        for (const auto &[key, value] : record.items()) {
            if (value.is_primitive() && std::ranges::find(keys, key) == keys.end())
                keys.push_back(key);
        }
    }
    output::Table table(keys);
    for (const Json &record : records) {
        std::vector<std::string> cells;
        cells.reserve(keys.size());
        for (const std::string &key : keys)
            cells.push_back(record.contains(key) ? output::safe(shown(record[key]), most) : "");
        table.add(std::move(cells));
    }
    table.write();
}

void runShow(Shared &shared, const ShowOptions &options)
{
    CacheFile cache(shared.file);
    cache.requireSound();
    Json records;
    forEachKind([&]<class Record>(const lib::KindTable<Record> &) {
        if constexpr (isShown<Record>) {
            if (isNamed<Record>(options.kind))
                records = read<Record>(cache.connection(), options);
        }
    });
    if (records.is_null())
        throw Obstacle(fmt::format("no kind is called \"{}\"", options.kind),
                       fmt::format("the kinds are {}; what belongs to a device or a site is shown with it: tarnel show "
                                   "device ID",
                                   allKinds()));
    cache.assertUnchanged();
    if (shared.isJson)
        return output::writeJson(records);
    if (options.ids.empty() || !options.condition.empty() || records.size() != options.ids.size())
        return writeTable(records);
    for (const Json &record : records) {
        writeTree(record, 0);
        output::write(&record == &records.back() ? "" : "\n");
    }
}

} // namespace

void addShow(CLI::App &app, Shared &shared)
{
    const auto options = std::make_shared<ShowOptions>();
    CLI::App *const command =
        app.add_subcommand("show", "Records as a client is handed them out: lists, or all of some");
    command->add_option("KIND", options->kind, "One of " + allKinds())->required();
    command->add_option("ID", options->ids, "Identifiers; those of sections and zones begin with their device's");
    command->add_option("--where", options->condition, "KEY=VALUE: those with a value, by the keys of requests")
        ->check([](const std::string &text) {
            return text.find('=') == std::string::npos ? "type KEY=VALUE, such as domain=11" : std::string();
        });
    command->add_option("-f,--file", shared.file, "The cache, or the directory in which it is")->capture_default_str();
    command->callback([&shared, options] { runShow(shared, *options); });
}

} // namespace tool
