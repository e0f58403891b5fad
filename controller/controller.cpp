#include "controller/controller.h"

#include "storage/sqlitedatabase.h"

#include <QDebug>

#include <new>

namespace tarnelLib::controller {

Controller::Controller() : m_database(std::make_unique<SQLiteDatabase>()) {}

Controller::~Controller() = default;

bool Controller::connectToDatabase(const QString &path)
try {
    const auto repaired = [this](bool isRepaired, Result result) {
        m_connectResult = isRepaired ? result : Result::DatabaseUnavailable;
        return isRepaired;
    };
    if (!m_database->isDatabaseFileExists(path))
        return repaired(m_database->restoreDatabase(path), Result::DatabaseCreated);
    if (!m_database->openDatabase(path))
        return repaired(m_database->recreateDatabase(path), Result::DatabaseRecreatedOpenFailed);
    if (!m_database->isDbVersionActual())
        return repaired(m_database->recreateDatabase(path), Result::DatabaseRecreatedVersionMismatch);
    if (!m_database->isTablesValid())
        return repaired(m_database->recreateDatabase(path), Result::DatabaseRecreatedTablesInvalid);
    m_connectResult = Result::Success;
    return true;
} catch (const std::bad_alloc &) {
    m_connectResult = Result::DatabaseUnavailable;
    qDebug("No database: out of memory");
    return false;
}

void Controller::onStart()
{
    m_state = TARNEL_STATE_RUNNING;
}

Result Controller::add(std::vector<Event> &events)
{
    if (!m_database->add(events))
        return Result::WriteFailed;
    return events.empty() ? Result::NotFound : Result::Success;
}

Result Controller::update(std::optional<Section> &section, quint32 device)
{
    const Result updated = changeResult(m_database->update(section, device), section);
    return updated == Result::Success ? checkDevice(device) : updated;
}

Result Controller::update(std::optional<Zone> &zone, quint32 device, quint32 section)
{
    const Result updated = changeResult(m_database->update(zone, device, section), zone);
    if (updated != Result::Success)
        return updated;
    bool isExists = false;
    const bool isRead = m_database->isSectionExists(isExists, device, section);
    const Result parent = existsResult(isRead, isExists, Result::ParentNotFound);
    return parent == Result::Success ? checkDevice(device) : parent;
}

Result Controller::checkDevice(quint32 device)
{
    bool isExists = false;
    const bool isRead = m_database->isDeviceExists(isExists, device);
    return existsResult(isRead, isExists, Result::ParentNotFound);
}

Result Controller::getSiteFields(std::optional<Text> &name, std::optional<Text> &address, quint32 site)
{
    bool isExists = false;
    const bool isRead = m_database->isSiteExists(isExists, site);
    if (const Result found = existsResult(isRead, isExists, Result::NotFound); found != Result::Success)
        return found;
    return m_database->getSiteFields(name, address, site) ? Result::Success : Result::ReadFailed;
}

Result Controller::removeAffectFlag(std::optional<Event> &event, quint32 id)
{
    bool isExists = false;
    const bool isRead = m_database->isEventExists(isExists, id);
    if (const Result found = existsResult(isRead, isExists, Result::NotFound); found != Result::Success)
        return found;
    return m_database->removeAffectFlag(event, id) && event ? Result::Success : Result::WriteFailed;
}

Result Controller::clearEventsBeforeDateExceptAffects(quint32 date)
{
    return writeItem([&] { return m_database->clearEventsBeforeDateExceptAffects(date); });
}

Result Controller::setServerIp(std::u16string_view address)
{
    return writeItem([&] { return m_database->setServerIp(address); });
}

Result Controller::getServerIp(std::optional<Text> &address)
{
    return m_database->getServerIp(address) ? Result::Success : Result::ReadFailed;
}

Result Controller::clearAll()
{
    return writeItem([&] { return m_database->clearAll(); });
}

Result Controller::clearAllExceptEvents()
{
    return writeItem([&] { return m_database->clearAllExceptEvents(); });
}

} // namespace tarnelLib::controller
