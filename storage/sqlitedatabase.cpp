#include "storage/sqlitedatabase.h"

#include "storage/database.h"

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

/// A long read must not hold up the short ones, which takes two; four threads that never rest read ...
constexpr int readerCount = 2;

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

/// Whether the journal is a log that readers and a writer use side by side.
bool isLogWrittenAhead(sqlite3 *connection)
{
    bool isAhead = false;
    const auto look = [](void *answer, int, char **columns, char **) {
        *static_cast<bool *>(answer) = qstrcmp(columns[0], "wal") == 0;
        return 0;
    };
    sqlite3_exec(connection, "PRAGMA journal_mode", look, &isAhead, nullptr);
    return isAhead;
}

} // namespace

SQLiteDatabase::~SQLiteDatabase()
{
    // Before the writer, which takes the log away when it closes last.
    m_readers.clear();
    closeDatabase();
}

bool SQLiteDatabase::isDatabaseFileExists(const QString &path)
{
    return QFile::exists(path);
}

bool SQLiteDatabase::restoreDatabase(const QString &path)
{
    if (openDatabase(path))
        return Database::createTables(m_writer);
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
    sqlite3 *const connection = nativeConnection(m_database);
    if (connection == nullptr)
        return false;
    // Waits for a lock once; each of the statements below would wait for it again.
    const int code = sqlite3_exec(connection, "SELECT 1 FROM sqlite_master LIMIT 1", nullptr, nullptr, nullptr);
    if (code != SQLITE_OK && !Failure{code, {}}.isOfContent()) {
        m_isContentUnknown = true;
        return false;
    }
    // Where the file system has no shared memory, the file keeps the rollback journal, as safe and slower; and a file
    // that is no database fails at its first read, not here.
    sqlite3_exec(connection, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    m_writer.attach(connection, [this] { Q_EMIT logGrew(); });
    return true;
}

void SQLiteDatabase::openReaders()
{
    sqlite3 *const connection = m_writer.connection();
    if (connection == nullptr || !isLogWrittenAhead(connection))
        return;
    for (int i = 0; i < readerCount; ++i) {
        auto reader = std::make_unique<Connection>();
        if (reader->openForReading(sqlite3_db_filename(connection, nullptr)))
            m_readers.push_back(std::move(reader));
    }
    m_readerTurns.open(m_readers.size());
}

Turn<WriteConnection> SQLiteDatabase::write()
{
    return {m_writerTurns, m_writerTurns.take(), m_writer};
}

Turn<Connection> SQLiteDatabase::read()
{
    if (m_readers.empty())
        return {m_writerTurns, m_writerTurns.take(), m_writer};
    const std::size_t number = m_readerTurns.take();
    return {m_readerTurns, number, *m_readers[number]};
}

void SQLiteDatabase::close()
{
    m_writerTurns.close();
    m_readerTurns.close();
}

bool SQLiteDatabase::recreateDatabase(const QString &path)
{
    if (m_isContentUnknown || m_writer.hasMetCircumstance()) {
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
    m_writer.detach();
    m_database.close();
}

bool SQLiteDatabase::isDbVersionActual()
{
    return Database::isDbVersionActual(m_writer);
}

bool SQLiteDatabase::isTablesValid()
{
    return Database::isTablesValid(m_writer);
}

} // namespace tarnelLib::controller
