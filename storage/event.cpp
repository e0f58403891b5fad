#include "storage/eventnames.h"
#include "storage/tableoperations.h"

#include <algorithm>

namespace tarnelLib::controller {

namespace {

/// The select of events without what they borrow, which `EventNames` lends them.
std::string selectBareEvents()
{
    sql::Selection selection = selectionOf<Event>();
    std::fill(selection.columns.begin() + modelFields<Event>.size(), selection.columns.end(), "NULL");
    return sql::select(selection);
}

/// From this many events on their names are looked up instead of joined: of 1,000 devices' events, 1,000 take 1.2
/// times as long that way, 10,000 take 0.75 times as long, and 100,000 take 0.55 times.
constexpr quint32 manyEvents = 2000;

/// Whether SQLite gives a text back as it was given. It keeps UTF-8, which knows no unpaired surrogates, takes a
/// byte-order mark off, and replaces the two code units that are no characters.
bool isKeptAsGiven(const std::optional<Text> &text)
{
    if (!text)
        return true;
    const std::u16string_view units = text->view();
    if (!units.empty() && units.front() == 0xfeff)
        return false;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i] < 0xd800)
            continue;
        const bool isPair = units[i] < 0xdc00 && i + 1 < units.size() && (units[i + 1] & 0xfc00) == 0xdc00;
        if (isPair)
            ++i;
        else if (units[i] < 0xe000 || units[i] >= 0xfffe)
            return false;
    }
    return true;
}

bool isKeptAsGiven(const Event &event)
{
    return isKeptAsGiven(event.data) && isKeptAsGiven(event.jData);
}

/// In the order of the identifiers, of which each is there once: of two events the later one was stored.
void sortAsStored(std::vector<Event> &events)
{
    const auto isOutOfOrder = [](const Event &left, const Event &right) { return left.id >= right.id; };
    if (std::ranges::adjacent_find(events, isOutOfOrder) == events.end())
        return;
    std::ranges::stable_sort(events, {}, &Event::id);
    const auto isSame = [](const Event &left, const Event &right) { return left.id == right.id; };
    events.erase(events.begin(), std::unique(events.rbegin(), events.rend(), isSame).base());
}

/// Fills a structure, of which every member is null, with what the event holds.
void toStructure(Event &&event, api::Event &structure)
{
    forEachColumn<Event>([&]<class Row>(const Row &row) {
        if constexpr (is<Row, Id>)
            structure.*row.apiMember = event.*row.member;
        else
            structure.*row.apiMember = toMember(std::move(event.*row.member));
    });
}

/// What a select of a range of time is for.
enum class InRange : std::size_t { Count, WithNames, Bare };

Query prepareInRange(Connection &reader, InRange version, Numbers range)
{
    Query query = reader.prepare(
        [version] {
            const std::string condition = " WHERE " + columnOf(&Event::time) + " BETWEEN ? AND ?";
            if (version == InRange::Count)
                return "SELECT count(*) FROM (SELECT 1 FROM " + std::string(Schema<Event>::table) + condition +
                       " LIMIT " + std::to_string(manyEvents) + ")";
            return (version == InRange::WithNames ? sql::select(Table<Event>::selection(sql::JoinKind::Inner))
                                                  : selectBareEvents()) +
                   condition;
        },
        static_cast<std::size_t>(version));
    query->bindNumbers(range);
    return query;
}

bool readInRange(Connection &reader, Structures<Event> &found, Numbers range)
{
    constexpr const char *message = "get events error";
    quint32 count = 0;
    if (!reader.readFirst(prepareInRange(reader, InRange::Count, range), message,
                          [&](const Statement &row) { row.read(0, count); }))
        return false;
    if (count < manyEvents)
        return reader.readAll(prepareInRange(reader, InRange::WithNames, range), found, message);
    EventNames names(reader);
    const bool isRead =
        reader.readEach(prepareInRange(reader, InRange::Bare, range), message, [&](const Statement &row) {
            readRecord<Event>(row, found.append());
            if (!names.lendTo(found.all().back()))
                found.removeLast();
        });
    return isRead && (names.failure() == nullptr || reader.fail(*names.failure()));
}

bool readOne(Connection &reader, Structures<Event> &found, quint32 id)
{
    return reader.readOne(Table<Event>::prepareGetById(reader, id), found, "get event by id error");
}

bool insert(WriteConnection &writer, std::span<const Event> events)
{
    const auto prepareIndex = [&] {
        return writer.prepare([] {
            const std::string time = columnOf(&Event::time);
            const std::string table(Schema<Event>::table);
            return "CREATE INDEX IF NOT EXISTS " + time + "Index ON " + table + " (" + time + ")";
        });
    };
    return insertAll(writer, events, "add events error") &&
           writer.run(prepareIndex(), "Create Events Time Index error");
}

/// Makes of events, which hold what is stored, what a read by their identifiers would give.
bool lendNames(Connection &reader, std::vector<Event> &&events, Structures<Event> &stored)
{
    sortAsStored(events);
    EventNames names(reader);
    for (Event &event : events) {
        toStructure(std::move(event), stored.append());
        if (!names.lendTo(stored.all().back()))
            stored.removeLast();
    }
    return names.failure() == nullptr || reader.fail(*names.failure());
}

bool readBack(Connection &reader, std::span<const Event> events, Structures<Event> &stored)
{
    std::vector<quint32> identifiers(events.size());
    std::ranges::transform(events, identifiers.begin(), &Event::id);
    const auto select = [] {
        return sql::select(Table<Event>::selection(sql::JoinKind::Inner)) + sql::whereIsListed(columnOf(&Event::id));
    };
    Query query = reader.prepare(select);
    query->bindList(1, identifiers);
    return reader.readAll(std::move(query), stored, "get events by ids error");
}

} // namespace

sql::Selection Table<Event>::selection(sql::JoinKind deviceJoin)
{
    const std::string device = columnOf(&Event::deviceId);
    const std::string section = columnOf(&Event::sectionId);
    sql::Selection selection = selectionOf<Event>();
    selection.joins = {
        sql::joinOf(modelFields<Device>, {device}, deviceJoin),
        sql::joinOf(modelFields<Section>, {device, section}),
        sql::joinOf(modelFields<Zone>, {device, section, columnOf(&Event::zoneId)}),
        sql::joinOf(modelFields<User>, {columnOf(&Event::userId)}),
        sql::joinOf(modelFields<Domain>, {columnOf(&User::domainId)}),
    };
    return selection;
}

bool Table<Event>::add(WriteConnection &writer, std::vector<Event> &&events, Structures<Event> &stored)
{
    return writer.inTransaction([&] {
        if (!insert(writer, events) || !writer.enter("get events by ids error"))
            return false;
        // What has been stored is known: reading it back would cost as much again as storing it.
        return std::ranges::all_of(events, [](const Event &event) { return isKeptAsGiven(event); })
                   ? lendNames(writer, std::move(events), stored)
                   : readBack(writer, events, stored);
    });
}

bool Table<Event>::add(WriteConnection &writer, const Event &event, Structures<Event> &stored)
{
    return writer.inTransaction([&] { return insert(writer, {&event, 1}) && readOne(writer, stored, event.id); });
}

bool Table<Event>::get(Connection &reader, Structures<Event> &found, Numbers range)
{
    if (!range.empty())
        return reader.inSnapshot([&] { return readInRange(reader, found, range); });
    return reader.readAll(reader.prepare([] {
        return sql::select(selection(sql::JoinKind::Inner)) + " WHERE " + columnOf(&Event::affect) + " = 1";
    }),
                          found, "get affect events error");
}

Query Table<Event>::prepareGetById(Connection &reader, quint32 id)
{
    return reader.prepareFor<Event>({&id, 1}, [] { return sql::select(selection(sql::JoinKind::Left)); });
}

bool Table<Event>::isExists(Connection &reader, bool &isExists, Numbers identifiers)
{
    return reader.readExists(reader.prepareIsExists<Event>(identifiers), isExists, "is event exists error");
}

bool Table<Event>::removeAffectFlag(WriteConnection &writer, quint32 id, Structures<Event> &stored)
{
    return writer.inTransaction([&] {
        Query query = writer.prepareFor<Event>({&id, 1}, [] {
            return "UPDATE " + std::string(Schema<Event>::table) + " SET " + columnOf(&Event::affect) + " = 0";
        });
        return writer.run(std::move(query), "remove affect flag error") && readOne(writer, stored, id);
    });
}

bool Table<Event>::clearBeforeDateExceptAffects(WriteConnection &writer, quint32 date)
{
    return writer.inTransaction([&] {
        Query query = writer.prepare([] {
            return sql::deleteFrom(Schema<Event>::table) + " WHERE " + columnOf(&Event::time) + " <= ? AND " +
                   columnOf(&Event::affect) + " = 0";
        });
        query->bind(1, date);
        return writer.run(std::move(query), "clear events before date error");
    });
}

} // namespace tarnelLib::controller
