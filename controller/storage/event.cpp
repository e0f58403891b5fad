#include "controller/storage/sqlitedatabase.h"

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

/// The statements that events alone have.
enum Special : std::size_t { GetInRange, GetById, GetAffects, GetOfMany, CreateIndex, RemoveAffectFlag, ClearBefore };

constexpr QueryPreparer::Key key(Special statement)
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
        std::vector<quint32> identifiers;
        identifiers.reserve(events.size());
        for (const Event &event : events)
            identifiers.push_back(event.id);
        if (!doAddEvents(events))
            return false;
        events.clear();
        Query query = m_preparer.prepare(key(GetOfMany), [] {
            return selectEvents(sql::JoinKind::Inner) + sql::whereIsListed(columnOf(&Event::id));
        });
        query->bindList(1, identifiers);
        return readAll(std::move(query), events, "get events by ids error");
    });
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
    Query query = m_preparer.prepare(key(GetInRange), [] {
        return selectEvents(sql::JoinKind::Inner) + " WHERE " + columnOf(&Event::time) + " BETWEEN ? AND ?";
    });
    QueryPreparer::bindAll(*query, from, to);
    return readAll(std::move(query), events, "get events error");
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
