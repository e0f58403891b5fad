#include "controller/controller.h"

#include "storage/databasefile.h"

#include <QDebug>

#include <cctype>

namespace tarnelLib::controller {

namespace {

constexpr std::string_view notCached = " is not in the cache";

} // namespace

void Controller::connectToDatabase(const QString &path)
{
    try {
        m_connectResult = connect(path);
    } catch (const std::bad_alloc &) {
        m_connectResult = Result::DatabaseUnavailable;
        qDebug("No database: out of memory");
        diagnostics::note("No database: out of memory");
    }
    // Also where it is no failure: what was tried before is nothing for the calls that follow.
    m_connectFailure = diagnostics::takeDetail();
}

Result Controller::connect(const QString &path)
{
    const auto repaired = [](bool isRepaired, Result result) {
        return isRepaired ? result : Result::DatabaseUnavailable;
    };
    if (file::isMissing(path))
        return repaired(m_database.restoreDatabase(path), Result::DatabaseCreated);
    if (!m_database.openDatabase(path))
        return repaired(m_database.recreateDatabase(path), Result::DatabaseRecreatedOpenFailed);
    if (!m_database.isDbVersionActual())
        return repaired(m_database.recreateDatabase(path), Result::DatabaseRecreatedVersionMismatch);
    if (!m_database.isTablesValid())
        return repaired(m_database.recreateDatabase(path), Result::DatabaseRecreatedTablesInvalid);
    return Result::Success;
}

void Controller::noteUnknownField(std::string_view kind, std::u16string_view key) noexcept
{
    const char initial = static_cast<char>(std::tolower(kind.front()));
    diagnostics::note(std::string_view(&initial, 1), kind.substr(1), " have no field \"", key.substr(0, 40),
                      "\" to filter by");
}

Result Controller::checkParents(Connection &connection, Numbers parents)
{
    bool isExists = true;
    if (parents.size() == 2) {
        const bool isRead = Table<Section>::isExists(connection, isExists, parents);
        if (isRead && !isExists)
            diagnostics::note("stored, but the section ", parents[1], " of the device ", parents[0], notCached);
        if (const Result section = existsResult(isRead, isExists, Result::ParentNotFound); section != Result::Success)
            return section;
    }
    const bool isRead = parents.empty() || Table<Device>::isExists(connection, isExists, parents.first(1));
    if (isRead && !isExists)
        diagnostics::note("stored, but the device ", parents[0], notCached);
    return existsResult(isRead, isExists, Result::ParentNotFound);
}

Result Controller::getSiteFields(SiteFields &fields, quint32 site)
{
    const bool isRead = Database::getSiteFields(*m_database.read(), fields, site);
    return existsResult(isRead, fields.isSiteStored, Result::NotFound);
}

Result Controller::removeAffectFlag(Structures<Event> &event, quint32 id)
{
    const auto connection = m_database.write();
    bool isExists = false;
    const bool isRead = Table<Event>::isExists(*connection, isExists, {&id, 1});
    if (const Result found = existsResult(isRead, isExists, Result::NotFound); found != Result::Success)
        return found;
    return writeResult(Table<Event>::removeAffectFlag(*connection, id, event) && !event.isEmpty());
}

Result Controller::getServerIp(std::optional<Text> &address)
{
    return Database::getServerIp(*m_database.read(), address) ? Result::Success : Result::ReadFailed;
}

} // namespace tarnelLib::controller
