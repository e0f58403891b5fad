#include "storage/sqlitedatabase.h"

#include "storage/databasefile.h"

#include <QDebug>
#include <QScopeGuard>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <sqlite3.h>

namespace tarnelLib::controller {

namespace {

constexpr std::u16string_view currentVersion = u"0.1";

/// The connection behind Qt's; null if it is not one of the SQLite library that this library is linked with, or if the
/// driver has no memory for the answer.
sqlite3 *nativeConnection(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    if (!query.exec(QStringLiteral("SELECT sqlite_source_id()")) || !query.next()) {
        file::logUnavailable(query.lastError().text(), 0);
        return nullptr;
    }
    const QVariant handle = database.driver()->handle();
    if (query.value(0).toString() != QLatin1String(sqlite3_sourceid()) || qstrcmp(handle.typeName(), "sqlite3*") != 0) {
        file::logUnavailable(QStringLiteral("Qt's SQLite driver uses another SQLite library than this one"), 0);
        return nullptr;
    }
    return *static_cast<sqlite3 *const *>(handle.constData());
}

} // namespace

SQLiteDatabase::~SQLiteDatabase()
{
    if (m_connection != nullptr)
        file::putLogAway(m_connection);
    closeDatabase();
}

bool SQLiteDatabase::isDatabaseFileExists(const QString &path)
{
    return !file::isMissing(path);
}

bool SQLiteDatabase::restoreDatabase(const QString &path)
{
    auto abandon = qScopeGuard([&] { abandonDatabase(path); });
    if (!openDatabase(path)) {
        qDebug("Unable to restore database");
        return false;
    }
    if (!createTables())
        return false;
    abandon.dismiss();
    return true;
}

bool SQLiteDatabase::openDatabase(const QString &path)
{
    // Until it is opened, nothing is known of it.
    m_isContentUnknown = true;
    auto abandon = qScopeGuard([&] { abandonDatabase(path); });
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE"))) {
        file::logUnavailable(QStringLiteral("Qt has no driver for SQLite, QSQLITE"), 0);
        return false;
    }
    if (file::isMissing(path)) {
        if (!file::make(path))
            return false;
        m_isFileNew = true;
    }
    // A connection of an earlier launch is still registered under the name.
    if (QSqlDatabase::contains(m_name))
        QSqlDatabase::removeDatabase(m_name);
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    m_name = path;
    m_database.setDatabaseName(path);
    if (!m_database.open()) {
        const int systemError = file::openingError(path);
        m_isContentUnknown = !file::isUnopenable(path, systemError);
        if (m_isContentUnknown)
            file::logUnavailable(m_database.lastError().databaseText(), systemError);
        return false;
    }
    if (!useConnection())
        return false;
    m_isContentUnknown = false;
    abandon.dismiss();
    return true;
}

bool SQLiteDatabase::useConnection()
{
    m_connection = nativeConnection(m_database);
    if (m_connection == nullptr)
        return false;
    // Waits for a lock once; each of the statements below would wait for it again. A file that is no database fails
    // at its first read, not here.
    if (file::isCircumstance(file::execute(m_connection, "SELECT 1 FROM sqlite_master LIMIT 1")) ||
        (m_isFileNew && !file::useLog(m_connection))) {
        file::logUnavailable(m_connection);
        return false;
    }
    // A commit is on the disk when it returns.
    file::execute(m_connection, "PRAGMA synchronous=FULL");
    // 100,000 users read in random order take 1.19 times as long with SQLite's own 2 MiB, 1.10 times with 8 MiB, and no
    // less with 64 or 128 MiB; at 800,000 users, adding in random order takes 1.24 times as long with 2 MiB.
    file::execute(m_connection, "PRAGMA cache_size=-16384");
    m_preparer.attach(m_connection);
    return true;
}

bool SQLiteDatabase::recreateDatabase(const QString &path)
{
    if (m_isContentUnknown) {
        closeDatabase();
        return false;
    }
    return removeDb() && openDatabase(path);
}

bool SQLiteDatabase::removeDb()
{
    closeDatabase();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
    return file::remove(m_name);
}

void SQLiteDatabase::closeDatabase()
{
    m_preparer.detach();
    m_connection = nullptr;
    m_database.close();
}

/// Leaves no file behind that was not there before: the next launch would take an empty one for a spoiled one.
void SQLiteDatabase::abandonDatabase(const QString &path)
{
    closeDatabase();
    if (!std::exchange(m_isFileNew, false))
        return;
    if (!file::remove(path))
        qDebug("An empty file is left behind");
}

bool SQLiteDatabase::isDbVersionActual()
{
    std::optional<Text> version;
    const Query query = m_preparer.prepareGetDbVersion();
    const Statement::Step step = query->step();
    if (step == Statement::Step::Row)
        query->read(0, version);
    else if (!isDone(step, *query, "get version error"))
        return false;
    return version && version->view() == currentVersion;
}

bool SQLiteDatabase::isTablesValid()
{
    if (!areTablesReadable())
        return false;
    // Not before: a file that cannot be used now is left as it is.
    m_isContentUnknown = !file::useLog(m_connection);
    if (m_isContentUnknown)
        file::logUnavailable(m_connection);
    return !m_isContentUnknown;
}

/// Of the links between users and sections, and of the session, not every column is needed.
bool SQLiteDatabase::areTablesReadable()
{
    const auto isReadable = [this](Query &&query) { return run(std::move(query), nullptr); };
    return inTransaction([&] {
        return isReadable(m_preparer.prepareGet<User>(0U)) && isReadable(m_preparer.prepareGet<Domain>(0U)) &&
               isReadable(m_preparer.prepareGet<Organization>(0U)) && isReadable(m_preparer.prepareGet<Locale>(0U)) &&
               isReadable(m_preparer.prepareGet<Person>(0U)) && isReadable(m_preparer.prepareGet<Contractor>(0U)) &&
               isReadable(m_preparer.prepareGet<Contract>(0U)) && isReadable(m_preparer.prepareGet<Zone>(0U, 0U, 0U)) &&
               isReadable(m_preparer.prepareGet<Section>(0U, 0U)) && isReadable(m_preparer.prepareGet<Device>(0U)) &&
               isReadable(m_preparer.prepareGet<Location>(0U)) && isReadable(m_preparer.prepareGet<Site>(0U)) &&
               isReadable(m_preparer.prepareGet<DeviceUser>(0U)) && isReadable(prepareGetEventById(0)) &&
               isReadable(m_preparer.prepareIsExists<DeviceUserSectionLink>(0U, 0U)) &&
               isReadable(m_preparer.prepareGetIp()) && isReadable(m_preparer.prepareGetDbVersion());
    });
}

bool SQLiteDatabase::createTables()
{
    return inTransaction([&] {
        return run(m_preparer.prepareCreateTable<User>(), "create table users error") &&
               run(m_preparer.prepareCreateTable<Domain>(), "create table domains error") &&
               run(m_preparer.prepareCreateTable<Organization>(), "create table orgs error") &&
               run(m_preparer.prepareCreateTable<Locale>(), "create table locales error") &&
               run(m_preparer.prepareCreateTable<Person>(), "create table persons error") &&
               run(m_preparer.prepareCreateTable<Contractor>(), "create table contractors error") &&
               run(m_preparer.prepareCreateTable<Contract>(), "create table contracts error") &&
               run(m_preparer.prepareCreateTable<Zone>(), "create table zones error") &&
               run(m_preparer.prepareCreateTable<Section>(), "create table sections error") &&
               run(m_preparer.prepareCreateTable<Device>(), "create table devices error") &&
               run(m_preparer.prepareCreateTable<Location>(), "create table locations error") &&
               run(m_preparer.prepareCreateTable<Site>(), "create table sites error") &&
               run(m_preparer.prepareCreateTable<DeviceUser>(), "create table device users error") &&
               run(m_preparer.prepareCreateTable<Event>(), "create table events error") &&
               run(m_preparer.prepareCreateTable<DeviceUserSectionLink>(),
                   "create table DeviceUserSectionLinks error") &&
               run(m_preparer.prepareCreateSessionTable(), "create table session error") &&
               run(m_preparer.prepareCreateVersionTable(), "create table version error") &&
               run(m_preparer.prepareSetDbVersion(currentVersion), "set verson error");
    });
}

void SQLiteDatabase::foldLog()
{
    if (!m_isLogUnfolded || m_connection == nullptr)
        return;
    m_isLogUnfolded = false;
    // A reader in another process only puts the folding off; waiting for it here would hold up the client.
    sqlite3_busy_timeout(m_connection, 0);
    const int code = sqlite3_wal_checkpoint_v2(m_connection, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    file::waitForLocks(m_connection);
    if (code != SQLITE_OK) {
        m_isLogUnfolded = true;
        Q_EMIT logGrew();
    }
}

bool SQLiteDatabase::run(Query &&query, const char *message)
{
    const Query use = std::move(query);
    Statement::Step step = Statement::Step::Row;
    while (step == Statement::Step::Row)
        step = use->step();
    return isDone(step, *use, message);
}

bool SQLiteDatabase::readExists(Query &&query, bool &isExists, const char *message)
{
    isExists = false;
    return readFirst(std::move(query), message, [&](const Statement &) { isExists = true; });
}

bool SQLiteDatabase::isDone(Statement::Step step, const Statement &statement, const char *message)
{
    if (step == Statement::Step::Done)
        return true;
    logFailure("execute error", statement);
    if (message != nullptr)
        logFailure(message, statement);
    return false;
}

void SQLiteDatabase::logFailure(const char *message, const Statement &statement)
{
    m_isContentUnknown = m_isContentUnknown || file::isCircumstance(statement.errorCode());
    qDebug().noquote() << message;
    qDebug().noquote() << statement.errorText();
}

bool SQLiteDatabase::Transaction::begin()
{
    // What undoes the transaction is made first: later there may be no memory for it.
    m_database.m_preparer.prepareRollback();
    m_isOpen = m_database.run(m_database.m_preparer.prepareBegin(), "begin transaction error");
    return m_isOpen;
}

bool SQLiteDatabase::Transaction::commit()
{
    const bool hasWritten = sqlite3_txn_state(m_database.m_connection, nullptr) == SQLITE_TXN_WRITE;
    if (!m_database.run(m_database.m_preparer.prepareCommit(), "commit transaction error"))
        return false;
    m_isOpen = false;
    if (hasWritten && !std::exchange(m_database.m_isLogUnfolded, true))
        Q_EMIT m_database.logGrew();
    return true;
}

SQLiteDatabase::Transaction::~Transaction()
{
    // Some failures have made SQLite undo the transaction already.
    if (m_isOpen && sqlite3_get_autocommit(m_database.m_connection) == 0)
        m_database.run(m_database.m_preparer.prepareRollback(), "rollback transaction error");
}

} // namespace tarnelLib::controller
