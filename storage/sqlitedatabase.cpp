#include "storage/sqlitedatabase.h"

#include "storage/database.h"
#include "storage/databasefile.h"

#include <QDebug>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace tarnelLib::controller {

namespace {

/// One reader would let a long read hold up the short ones. Four threads that read without rest, of users one by one,
/// make a third of one thread's reads with two readers, as they wait for each other, and more than twice as many with
/// four. Each takes two descriptors and less than 0.1 MiB.
constexpr int readerCount = 4;

/// So many reads of a connection may begin at a state that was held before a write: one after the other, they take
/// longer until the present state is held.
constexpr unsigned int readsToAState = 64;

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
        // GCOVR_EXCL_START: on a system where Qt brings an SQLite of its own.
        file::logUnavailable(QStringLiteral("Qt's SQLite driver uses another SQLite library than this one"), 0);
        return nullptr;
        // GCOVR_EXCL_STOP
    }
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
    m_mark.close();
    m_readers.clear();
    if (m_writer.connection() != nullptr)
        file::putLogAway(m_writer.connection());
    closeDatabase();
}

bool SQLiteDatabase::restoreDatabase(const QString &path)
{
    auto abandon = qScopeGuard([&] { abandonDatabase(path); });
    if (!openDatabase(path)) {
        qDebug("Unable to restore database");
        return false;
    }
    if (!Database::createTables(m_writer))
        return false;
    openReaders();
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
    sqlite3 *const connection = nativeConnection(m_database);
    if (connection == nullptr)
        return false;
    // Waits for a lock once; each of the statements that follow would wait for it again. A file that is no database
    // fails at its first read, not here.
    const int code = file::execute(connection, "SELECT 1 FROM sqlite_master LIMIT 1");
    bool isUsable = code == SQLITE_OK || Failure::isOfContent(code);
    if (isUsable) {
        m_writer.attach(connection);
        isUsable = !m_isFileNew || file::useLog(connection);
    }
    if (!isUsable)
        file::logUnavailable(connection);
    return isUsable;
}

bool SQLiteDatabase::isDbVersionActual()
{
    return Database::isDbVersionActual(m_writer);
}

bool SQLiteDatabase::isTablesValid()
{
    if (!Database::isTablesValid(m_writer))
        return false;
    // Not before: a file that cannot be used now is left as it is.
    m_isContentUnknown = !file::useLog(m_writer.connection());
    if (m_isContentUnknown)
        file::logUnavailable(m_writer.connection());
    else
        openReaders();
    return !m_isContentUnknown;
}

bool SQLiteDatabase::recreateDatabase(const QString &path)
{
    closeDatabase();
    if (m_isContentUnknown || m_writer.hasMetCircumstance())
        return false;
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
    if (file::isInUse(path) || !file::remove(path) || !openDatabase(path))
        return false;
    openReaders();
    return true;
}

void SQLiteDatabase::closeDatabase()
{
    m_mark.close();
    m_readers.clear();
    m_writer.detach();
    m_database.close();
}

/// Leaves no file behind that was not there before: the next launch would take an empty one for a spoiled one.
void SQLiteDatabase::abandonDatabase(const QString &path)
{
    closeDatabase();
    if (std::exchange(m_isFileNew, false) && !file::remove(path))
        qDebug("An empty file is left behind"); // GCOVR_EXCL_LINE: it could be made, and cannot be deleted.
}

void SQLiteDatabase::openReaders()
{
    sqlite3 *const connection = m_writer.connection();
    // First, and without a look at the outcome: a disk that fails here fails the readers as well.
    if (isLogWrittenAhead(connection))
        m_mark.open(sqlite3_db_filename(connection, nullptr));
    for (int i = 0; i < readerCount && isLogWrittenAhead(connection); ++i) {
        auto reader = std::make_unique<Reader>();
        const int code = reader->openForReading(sqlite3_db_filename(connection, nullptr));
        const bool isWithoutMeans = code == SQLITE_NOMEM || (code & 0xff) == SQLITE_CANTOPEN;
        m_isContentUnknown = code != SQLITE_OK && !isWithoutMeans;
        if (m_isContentUnknown) {
            file::logUnavailable(reader->connection());
            m_readers.clear();
            break;
        }
        if (code == SQLITE_OK)
            m_readers.push_back(std::move(reader));
    }
    m_readerTurns.open(m_readers.size());
    // Of a launch that ended in a kill, perhaps.
    if (!m_readers.empty() && sqlite3_db_readonly(connection, nullptr) == 0)
        m_writer.noteUnfoldedLog();
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
    Reader &reader = *m_readers[number];
    if (++reader.reads % readsToAState == 0)
        m_mark.renew();
    return {m_readerTurns, number, reader};
}

void SQLiteDatabase::close() noexcept
{
    m_writerTurns.close();
    m_readerTurns.close();
}

} // namespace tarnelLib::controller
