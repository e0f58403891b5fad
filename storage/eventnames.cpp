#include "storage/eventnames.h"

namespace tarnelLib::controller {

namespace {

/// The statement that reads one column of the row with the identifiers that the table begins with.
template <class Record>
Query prepareLookUp(QueryPreparer &preparer, const std::string &column, std::size_t identifierCount,
                    const std::vector<sql::Join> &joins = {})
{
    return preparer.prepare([&] {
        return sql::select({.table = Schema<Record>::table, .columns = {column}, .joins = joins}) +
               sql::where(firstColumns<Record>(identifierCount));
    });
}

} // namespace

EventNames::EventNames(QueryPreparer &preparer)
    : m_accounts(prepareLookUp<Device>(preparer, columnOf(&Device::account), 1), m_memory),
      m_sections(prepareLookUp<Section>(preparer, columnOf(&Section::name), 2), m_memory),
      m_zones(prepareLookUp<Zone>(preparer, columnOf(&Zone::name), 3), m_memory),
      m_domains(prepareLookUp<User>(preparer, columnOf(&Domain::name), 1,
                                    {sql::joinOf(modelFields<Domain>, {columnOf(&User::domainId)})}),
                m_memory)
{
    for (const Query *query : {&m_accounts.query, &m_sections.query, &m_zones.query, &m_domains.query}) {
        if (!(*query)->isPrepared())
            m_failure = &(*query)->failure();
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
    Statement &statement = *known.query;
    statement.bindAll(qint64(identifiers)...);
    const Statement::Step step = statement.step();
    row.isStored = step == Statement::Step::Row;
    if constexpr (std::is_same_v<Value, Name>) {
        if (const std::optional<Text> name = row.isStored ? statement.readText(0) : std::nullopt)
            row.value.emplace(name->view(), &m_memory);
    } else if (row.isStored && !statement.isNull(0)) {
        statement.read(0, row.value.emplace());
    }
    if (step == Statement::Step::Failed)
        m_failure = &statement.failure();
    statement.reset();
    return row;
}

bool EventNames::lendTo(api::Event &event)
{
    if (m_failure != nullptr || event.deviceId == nullptr)
        return false;
    const auto &device = find(m_accounts, *event.deviceId);
    if (!device.isStored)
        return false;
    event.deviceAccount = toMember(device.value);
    if (event.sectionId != nullptr)
        event.sectionName = copyOf(find(m_sections, *event.deviceId, *event.sectionId).value);
    if (event.sectionId != nullptr && event.zoneId != nullptr)
        event.zoneName = copyOf(find(m_zones, *event.deviceId, *event.sectionId, *event.zoneId).value);
    if (event.userId != nullptr)
        event.domainName = copyOf(find(m_domains, *event.userId).value);
    return m_failure == nullptr;
}

} // namespace tarnelLib::controller
