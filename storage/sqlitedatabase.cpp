#include "storage/sqlitedatabase.h"

#include <QDebug>
#include <QFile>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

namespace tarnelLib::controller {

namespace {

constexpr std::u16string_view currentVersion = u"0.1";

/// What Qt's driver sets; folding the log puts it back.
constexpr int busyTimeoutMs = 5000;

/// The files that SQLite keeps beside the main file. One that outlives its main file would be taken for the next one's.
constexpr std::array sideFiles = {"-wal", "-shm", "-journal"};

void removeSideFiles(const QString &path)
{
    for (const char *suffix : sideFiles)
        QFile::remove(path + QLatin1String(suffix));
}

/// Makes the empty file, for its owner alone: it will hold phones and addresses. SQLite gives side files the same mode.
/// The process's umask is not ours to change, and a link that leads nowhere is not ours to follow.
bool createFile(const QString &path)
{
    removeSideFiles(path);
    const int file = ::open(QFile::encodeName(path).constData(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC,
                            S_IRUSR | S_IWUSR);
    if (file < 0)
        return false;
    const bool isOwned = ::fchmod(file, S_IRUSR | S_IWUSR) == 0;
    ::close(file);
    return isOwned;
}

/// The connection behind Qt's, if it is one of the SQLite library that this library is linked with.
sqlite3 *nativeConnection(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    const bool isAnswered = query.exec(QStringLiteral("SELECT sqlite_source_id()")) && query.next();
    if (!isAnswered || query.value(0).toString() != QLatin1String(sqlite3_sourceid())) {
        qDebug("Qt's SQLite driver uses another SQLite library than this one");
        return nullptr;
    }
    const QVariant handle = database.driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
}

/// Whether a failure lies in the circumstances, so that nothing follows from it for the content of the file.
bool isCircumstance(int errorCode)
{
    switch (errorCode & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
    case SQLITE_NOMEM:
        return true;
    default:
        return false;
    }
}

} // namespace

SQLiteDatabase::~SQLiteDatabase()
{
    closeDatabase();
}

bool SQLiteDatabase::isDatabaseFileExists(const QString &path)
{
    return QFile::exists(path);
}

bool SQLiteDatabase::restoreDatabase(const QString &path)
{
    if (openDatabase(path))
        return createTables();
    qDebug("Unable to restore database");
    return false;
}

bool SQLiteDatabase::openDatabase(const QString &path)
{
    if (!QFile::exists(path) && !createFile(path))
        return false;
    // A connection of an earlier launch is still registered under the name.
    if (QSqlDatabase::contains(m_name))
        QSqlDatabase::removeDatabase(m_name);
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    m_name = path;
    m_database.setDatabaseName(path);
    return m_database.open() && useConnection();
}

bool SQLiteDatabase::useConnection()
{
    m_connection = nativeConnection(m_database);
    if (m_connection == nullptr)
        return false;
    // Waits for a lock once; each of the statements below would wait for it again.
    if (isCircumstance(sqlite3_exec(m_connection, "SELECT 1 FROM sqlite_master LIMIT 1", nullptr, nullptr, nullptr))) {
        m_isContentUnknown = true;
        return false;
    }
    // A commit is on the disk when it returns. Where the file system has no shared memory, the file keeps the rollback
    // journal, as safe and slower; and a file that is no database fails at its first read, not here.
    sqlite3_exec(m_connection, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    sqlite3_exec(m_connection, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
    // 100,000 users read in random order take 1.19 times as long with SQLite's own 2 MiB, 1.10 times with 8 MiB, and no
    // less with 64 or 128 MiB; at 800,000 users, adding in random order takes 1.24 times as long with 2 MiB.
    sqlite3_exec(m_connection, "PRAGMA cache_size=-16384", nullptr, nullptr, nullptr);
    m_preparer.attach(m_connection);
    return true;
}

bool SQLiteDatabase::recreateDatabase(const QString &path)
{
    if (m_isContentUnknown) {
        closeDatabase();
        qDebug("Unable to recreate database: it is in use");
        return false;
    }
    return removeDb() && openDatabase(path);
}

bool SQLiteDatabase::removeDb()
{
    closeDatabase();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
    if (!QFile::remove(m_name))
        return false;
    removeSideFiles(m_name);
    return true;
}

void SQLiteDatabase::closeDatabase()
{
    m_preparer.detach();
    m_connection = nullptr;
    m_database.close();
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
    const auto isReadable = [this](Query &&query) { return run(std::move(query), nullptr); };
    return inTransaction([&] {
        return isReadable(m_preparer.prepareGet<User>(0U)) && isReadable(m_preparer.prepareGet<Domain>(0U)) &&
               isReadable(m_preparer.prepareGet<Organization>(0U)) && isReadable(m_preparer.prepareGet<Locale>(0U)) &&
               isReadable(m_preparer.prepareGet<Person>(0U)) && isReadable(m_preparer.prepareGet<Contractor>(0U)) &&
               isReadable(m_preparer.prepareGet<Contract>(0U)) && isReadable(m_preparer.prepareGet<Zone>(0U, 0U, 0U)) &&
               isReadable(m_preparer.prepareGet<Section>(0U, 0U)) && isReadable(m_preparer.prepareGet<Device>(0U)) &&
               isReadable(m_preparer.prepareGet<Location>(0U)) && isReadable(m_preparer.prepareGet<Site>(0U)) &&
               isReadable(m_preparer.prepareGet<DeviceUser>(0U)) && isReadable(prepareGetEventById(0)) &&
               isReadable(m_preparer.prepareGet<DeviceUserSectionLink>(0U)) && isReadable(m_preparer.prepareGetIp()) &&
               isReadable(m_preparer.prepareGetDbVersion());
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
    sqlite3_busy_timeout(m_connection, busyTimeoutMs);
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
    m_isContentUnknown = m_isContentUnknown || isCircumstance(statement.errorCode());
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
