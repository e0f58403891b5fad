#include "tools/tarnel/eventquery.h"

namespace tool {

namespace {

std::size_t ownColumns()
{
    static const std::size_t count = lib::Table<lib::Event>::selection(lib::sql::JoinKind::Left).columns.size();
    return count;
}

std::string compose(const EventFilter &filter)
{
    const std::string time = lib::columnOf(&lib::Event::time);
    const std::string id = lib::columnOf(&lib::Event::id);
    lib::sql::Selection selection = lib::Table<lib::Event>::selection(lib::sql::JoinKind::Left);
    selection.columns.push_back(lib::columnOf(&lib::Device::id));
    selection.columns.push_back(lib::columnOf(&lib::User::name));
    std::string conditions;
    const auto add = [&](bool isAsked, const std::string &condition) {
        if (isAsked)
            conditions += fmt::format("{} {}", conditions.empty() ? " WHERE" : " AND", condition);
    };
    add(filter.from.has_value(), time + " >= ?");
    add(filter.to.has_value(), time + " <= ?");
    add(filter.device.has_value(), lib::columnOf(&lib::Event::deviceId) + " = ?");
    add(filter.eventClass.has_value(), lib::columnOf(&lib::Event::eventClass) + " = ?");
    add(filter.after.has_value(), fmt::format("{}.rowid > ?", lib::Schema<lib::Event>::table));
    add(filter.isAffecting, lib::columnOf(&lib::Event::affect) + " = 1");
    add(filter.isHidden, lib::columnOf(&lib::Device::id) + " IS NULL");
    if (!filter.last)
        return fmt::format("{}{} ORDER BY {}, {}", lib::sql::select(selection), conditions, time, id);
    return fmt::format("SELECT * FROM ({}{} ORDER BY {} DESC, {} DESC LIMIT ?) ORDER BY {}, {}",
                       lib::sql::select(selection), conditions, time, id, time, id);
}

std::vector<std::int64_t> numbersOf(const EventFilter &filter)
{
    std::vector<std::int64_t> numbers;
    for (const auto &number : {filter.from, filter.to, filter.device, filter.eventClass, filter.after, filter.last}) {
        if (number)
            numbers.push_back(*number);
    }
    return numbers;
}

} // namespace

EventQuery::EventQuery(lib::Connection &connection, const EventFilter &filter)
    : m_query(connection, compose(filter), numbersOf(filter))
{
}

Json EventQuery::event() const
{
    lib::Structures<lib::Event> event;
    lib::readRecord<lib::Event>(m_query.row(), event.append());
    Json json = toJson<lib::Event>(event.all().front());
    const int device = static_cast<int>(ownColumns());
    if (!m_query.isNull(device + 1))
        json["operator_name"] = m_query.bytes(device + 1);
    if (m_query.isNull(device))
        json["hidden"] = true;
    return json;
}

std::int64_t lastEventRow(lib::Connection &connection)
{
    return number(connection, fmt::format("SELECT max(rowid) FROM {}", lib::Schema<lib::Event>::table)).value_or(0);
}

} // namespace tool
