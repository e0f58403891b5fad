#include "storage/eventnames.h"
#include "storage/sqlitedatabase.h"

#include <algorithm>

namespace tarnelLib::controller {

namespace {

using Model = TableModel<Event>;

template <class Record, class Member>
std::string columnOf(Member Record::*member)
{
    return TableModel<Record>::column(member).column();
}

/// The select of events with the names that they borrow. An inner join leaves out the events of unknown devices.
std::string selectEvents(sql::JoinKind deviceJoin)
{
    const std::string device = columnOf(&Event::deviceId);
    const std::string section = columnOf(&Event::sectionId);
    const auto equals = [](const std::string &column, const ModelField &other) {
        return column + " = " + other.column();
    };
    const auto &sections = TableModel<Section>::fields;
    const auto &zones = TableModel<Zone>::fields;
    sql::Selection selection = SelectionBuilder::of<Event>();
    selection.joins = {
        {Schema<Device>::table, equals(device, TableModel<Device>::column(&Device::id)), deviceJoin},
        {Schema<Section>::table, equals(device, sections[0]) + " AND " + equals(section, sections[1])},
        {Schema<Zone>::table, equals(device, zones[0]) + " AND " + equals(section, zones[1]) + " AND " +
                                  equals(columnOf(&Event::zoneId), zones[2])},
        {Schema<User>::table, equals(columnOf(&Event::userId), TableModel<User>::column(&User::id))},
        {Schema<Domain>::table, equals(columnOf(&User::domainId), TableModel<Domain>::column(&Domain::id))},
    };
    return sql::select(selection);
}

/// The select of events without what they borrow, which `EventNames` lends them.
std::string selectBareEvents()
{
    sql::Selection selection = SelectionBuilder::of<Event>();
    std::fill(selection.columns.begin() + Model::fields.size(), selection.columns.end(), "NULL");
    return sql::select(selection);
}

/// From so many events on it is worth while to look names up instead of joining them: of 1,000 devices' events, 1,000
/// take 1.2 times as long that way, 10,000 take 0.75 times as long, and 100,000 take 0.55 times.
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

/// The statements that events alone have.
enum Special : std::size_t {
    CountInRange,
    GetInRange,
    GetBareInRange,
    GetById,
    GetAffects,
    GetOfMany,
    CreateIndex,
    RemoveAffectFlag,
    ClearBefore
};

constexpr QueryPreparer::Key key(std::size_t statement)
{
    return {QueryPreparer::Verb::Special, &Schema<Event>::table, statement};
}

} // namespace

bool SQLiteDatabase::createEventsTimeIndex()
{
    return run(m_preparer.prepare(key(CreateIndex),
                                  [] {
                                      const std::string column = columnOf(&Event::time);
                                      return "CREATE INDEX IF NOT EXISTS " + column + "Index ON " +
                                             std::string(Model::table) + " (" + column + ")";
                                  }),
               "Create Events Time Index error");
}

bool SQLiteDatabase::doAddEvents(std::span<const Event> events)
{
    return insertAll(events, "add events error") && createEventsTimeIndex();
}

bool SQLiteDatabase::add(std::vector<Event> &events)
{
    return inTransaction([&] {
        if (!doAddEvents(events))
            return false;
        // What has been stored is known: reading it back would cost as much again as storing it.
        return std::ranges::all_of(events, [](const Event &event) { return isKeptAsGiven(event); })
                   ? lendNames(events, "get events by ids error")
                   : readBack(events);
    });
}

/// Takes the events, which hold what is stored, for those that a read by their identifiers would give.
bool SQLiteDatabase::lendNames(std::vector<Event> &events, const char *message)
{
    sortAsStored(events);
    EventNames names(m_preparer);
    std::erase_if(events, [&](Event &event) { return !names.lendTo(event); });
    return names.failure() == nullptr || isDone(Statement::Step::Failed, *names.failure(), message);
}

bool SQLiteDatabase::readBack(std::vector<Event> &events)
{
    std::vector<quint32> identifiers;
    identifiers.reserve(events.size());
    for (const Event &event : events)
        identifiers.push_back(event.id);
    events.clear();
    Query query = m_preparer.prepare(
        key(GetOfMany), [] { return selectEvents(sql::JoinKind::Inner) + sql::whereIsListed(columnOf(&Event::id)); });
    query->bindList(1, identifiers);
    return readAll(std::move(query), events, "get events by ids error");
}

bool SQLiteDatabase::add(std::optional<Event> &event)
{
    return inTransaction([&] {
        const quint32 id = event->id;
        return doAddEvents({&*event, 1}) && getEventById(event, id);
    });
}

bool SQLiteDatabase::get(std::vector<Event> &events, quint32 from, quint32 to)
{
    constexpr const char *message = "get events error";
    return inTransaction([&] {
        quint32 count = 0;
        if (!readFirst(prepareInRange(CountInRange, from, to), message,
                       [&](const Statement &row) { row.read(0, count); }))
            return false;
        if (count < manyEvents)
            return readAll(prepareInRange(GetInRange, from, to), events, message);
        EventNames names(m_preparer);
        const bool isRead = readEach(prepareInRange(GetBareInRange, from, to), message, [&](const Statement &row) {
            RowReader::read(row, events.emplace_back());
            if (!names.lendTo(events.back()))
                events.pop_back();
        });
        return isRead && (names.failure() == nullptr || isDone(Statement::Step::Failed, *names.failure(), message));
    });
}

Query SQLiteDatabase::prepareInRange(std::size_t statement, quint32 from, quint32 to)
{
    Query query = m_preparer.prepare(key(statement), [&] {
        const std::string condition = " WHERE " + columnOf(&Event::time) + " BETWEEN ? AND ?";
        if (statement == CountInRange)
            return "SELECT count(*) FROM (SELECT 1 FROM " + std::string(Model::table) + condition + " LIMIT " +
                   std::to_string(manyEvents) + ")";
        return (statement == GetInRange ? selectEvents(sql::JoinKind::Inner) : selectBareEvents()) + condition;
    });
    QueryPreparer::bindAll(*query, from, to);
    return query;
}

bool SQLiteDatabase::get(std::vector<Event> &events)
{
    return readAll(m_preparer.prepare(key(GetAffects),
                                      [] {
                                          return selectEvents(sql::JoinKind::Inner) + " WHERE " +
                                                 columnOf(&Event::affect) + " = 1";
                                      }),
                   events, "get affect events error");
}

Query SQLiteDatabase::prepareGetEventById(quint32 id)
{
    Query query = m_preparer.prepare(
        key(GetById), [] { return selectEvents(sql::JoinKind::Left) + sql::where({columnOf(&Event::id)}); });
    query->bind(1, id);
    return query;
}

bool SQLiteDatabase::getEventById(std::optional<Event> &event, quint32 id)
{
    return readOne(prepareGetEventById(id), event, "get event by id error");
}

bool SQLiteDatabase::isEventExists(bool &isExists, quint32 id)
{
    return readExists(m_preparer.prepareIsExists<Event>(id), isExists, "is event exists error");
}

bool SQLiteDatabase::removeAffectFlag(std::optional<Event> &event, quint32 id)
{
    return inTransaction([&] {
        Query query = m_preparer.prepare(key(RemoveAffectFlag), [] {
            return "UPDATE " + std::string(Model::table) + " SET " + columnOf(&Event::affect) + " = 0" +
                   sql::where({columnOf(&Event::id)});
        });
        query->bind(1, id);
        return run(std::move(query), "remove affect flag error") && getEventById(event, id);
    });
}

bool SQLiteDatabase::clearEventsBeforeDateExceptAffects(quint32 date)
{
    return inTransaction([&] {
        Query query = m_preparer.prepare(key(ClearBefore), [] {
            return sql::deleteFrom(Model::table) + " WHERE " + columnOf(&Event::time) + " <= ? AND " +
                   columnOf(&Event::affect) + " = 0";
        });
        query->bind(1, date);
        return run(std::move(query), "clear events before date error");
    });
}

} // namespace tarnelLib::controller
