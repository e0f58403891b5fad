#include "controller/controller.h"

#include "controller/storage/sqlitedatabase.h"

namespace tarnelLib::controller
{

Controller::Controller() : m_database(std::make_unique<SQLiteDatabase>()) {}

Controller::~Controller() = default;

bool Controller::connectToDatabase(const QString &path)
{
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
}

void Controller::onStart()
{
    m_state = TARNEL_STATE_RUNNING;
}

template <>
bool Controller::removeItem<Domain>(quint32 id)
{
    return m_database->deleteDomain(id);
}

template <>
bool Controller::removeItem<User>(quint32 id)
{
    return m_database->deleteUser(id);
}

} // namespace tarnelLib::controller
