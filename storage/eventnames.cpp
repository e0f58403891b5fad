#include "storage/eventnames.h"

namespace tarnelLib::controller {

namespace {

/// The statement that reads one column of the row with the first so many identifiers.
template <class Record>
Query prepareLookUp(QueryPreparer &preparer, const ModelField &column, std::size_t identifierCount,
                    const std::vector<sql::Join> &joins = {})
{
    return preparer.prepare({QueryPreparer::Verb::LookUp, &column}, [&] {
        return sql::select({.table = Schema<Record>::table, .columns = {column.column()}, .joins = joins}) +
               sql::where(QueryPreparer::firstColumns<Record>(identifierCount));
    });
}

std::vector<sql::Join> joinDomainOfUser()
{
    const std::string condition =
        TableModel<User>::column(&User::domainId).column() + " = " + TableModel<Domain>::column(&Domain::id).column();
    return {{Schema<Domain>::table, condition}};
}

} // namespace

EventNames::EventNames(QueryPreparer &preparer)
    : m_accounts{prepareLookUp<Device>(preparer, TableModel<Device>::column(&Device::account), 1), {}},
      m_sections{prepareLookUp<Section>(preparer, TableModel<Section>::column(&Section::name), 2), {}},
      m_zones{prepareLookUp<Zone>(preparer, TableModel<Zone>::column(&Zone::name), 3), {}},
      m_domains{prepareLookUp<User>(preparer, TableModel<Domain>::column(&Domain::name), 1, joinDomainOfUser()), {}}
{
    for (const Query *query : {&m_accounts.query, &m_sections.query, &m_zones.query, &m_domains.query}) {
        if (!(*query)->isPrepared())
            m_failure = &**query;
    }
}

template <class Value, std::size_t size, class... Identifiers>
const typename EventNames::Known<Value, size>::Row &EventNames::find(Known<Value, size> &known,
                                                                     Identifiers... identifiers)
{
    const auto [entry, isNew] = known.rows.try_emplace({qint64(identifiers)...});
    auto &row = entry->second;
    if (!isNew)
        return row;
    QueryPreparer::bindAll(*known.query, qint64(identifiers)...);
    const Statement::Step step = known.query->step();
    row.isStored = step == Statement::Step::Row;
    if (row.isStored)
        known.query->read(0, row.value);
    else if (step == Statement::Step::Failed)
        m_failure = &*known.query;
    known.query->reset();
    return row;
}

bool EventNames::lendTo(Event &event)
{
    if (m_failure != nullptr || !event.deviceId)
        return false;
    const auto &device = find(m_accounts, *event.deviceId);
    if (!device.isStored)
        return false;
    event.deviceAccount = device.value;
    if (event.sectionId)
        event.sectionName = find(m_sections, *event.deviceId, *event.sectionId).value;
    if (event.sectionId && event.zoneId)
        event.zoneName = find(m_zones, *event.deviceId, *event.sectionId, *event.zoneId).value;
    if (event.userId)
        event.domainName = find(m_domains, *event.userId).value;
    return m_failure == nullptr;
}

} // namespace tarnelLib::controller
