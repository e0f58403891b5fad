#include "storage/databasefile.h"

#include "diagnostics/reason.h"
#include "storage/connection.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>

namespace tarnelLib::controller::file {

namespace {

/// A reader in another process keeps the log from being used; waiting longer for it would hold up the launch.
constexpr int logTimeoutMs = 1000;
/// The same at an exit, which is short.
constexpr int exitTimeoutMs = 100;

constexpr const char *readAnything = "SELECT 1 FROM sqlite_master LIMIT 1";
constexpr const char *closeLog = "PRAGMA journal_mode=DELETE";

/// Removes a file, if it is there.
bool removeOne(const QString &path)
{
    return ::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
}

/// Removes the files that SQLite keeps beside the main file. One that outlives its main file would be taken for the
/// next one's.
bool removeSideFiles(const QString &path)
{
    constexpr std::array suffixes = {"-wal", "-shm", "-journal"};
    for (const char *suffix : suffixes) {
        if (!removeOne(path + QLatin1String(suffix)))
            return false;
    }
    return true;
}

} // namespace

LaunchTurn::LaunchTurn(const QString &path)
    : m_directory(::open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(busyTimeoutMs);
    do
        m_isTaken = ::flock(m_directory, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    while (!m_isTaken && std::chrono::steady_clock::now() < end && ::usleep(1000) == 0);
    if (!m_isTaken)
        logUnavailable(QStringLiteral("another process is being launched"), 0);
}

LaunchTurn::~LaunchTurn()
{
    // A process that was forked off meanwhile has the descriptor, too, and may keep it.
    ::flock(m_directory, LOCK_UN);
    ::close(m_directory);
}

bool isMissing(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) != 0 && errno == ENOENT;
}

/// The file is for its owner alone: it will hold phones and addresses. SQLite gives side files the same mode. The
/// process's umask is not ours to change, and a link that leads nowhere is not ours to follow.
bool make(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const int file = ::open(name.constData(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        logUnavailable(QStringLiteral("it cannot be made"), errno);
        return false;
    }
    const bool isOwned = ::fchmod(file, S_IRUSR | S_IWUSR) == 0;
    ::close(file);
    // Not before: the side files of a file that is there after all are part of it.
    if (isOwned && removeSideFiles(path))
        return true;
    logUnavailable(QStringLiteral("it cannot be made"), errno);
    ::unlink(name.constData());
    return false;
}

bool isInUse(const QString &path)
{
    // SQLite's lock bytes, which begin behind the first gibibyte of every file.
    struct flock locks = {};
    locks.l_type = F_WRLCK;
    locks.l_whence = SEEK_SET;
    locks.l_start = 1 << 30;
    locks.l_len = 512;
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const bool isLocked = ::fcntl(file, F_GETLK, &locks) == 0 && locks.l_type != F_UNLCK;
    ::close(file);
    if (isLocked)
        logUnavailable(QStringLiteral("another process uses it"), 0);
    return isLocked;
}

bool remove(const QString &path)
{
    if (removeOne(path) && removeSideFiles(path))
        return true;
    // GCOVR_EXCL_START: a directory that forbids it. Who tests that is a child without rights, which nobody counts.
    logUnavailable(QStringLiteral("it cannot be removed"), errno);
    return false;
    // GCOVR_EXCL_STOP
}

int openingError(const QString &path)
{
    sqlite3 *connection = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &connection, SQLITE_OPEN_READWRITE, nullptr);
    const int systemError = sqlite3_system_errno(connection);
    sqlite3_close(connection);
    return systemError;
}

bool isUnopenable(const QString &path, int systemError)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    // That it can be looked at tells that the directory does not forbid it.
    if (::stat(name.constData(), &status) != 0)
        return false; // GCOVR_EXCL_LINE: somebody has deleted it since it could not be opened.
    if (S_ISSOCK(status.st_mode))
        return systemError == ENXIO;
    return systemError == EACCES && S_ISREG(status.st_mode) &&
           ::faccessat(AT_FDCWD, name.constData(), R_OK, AT_EACCESS) != 0 && errno == EACCES;
}

void logUnavailable(const QString &reason, int systemError)
{
    const QString detail = systemError == 0 ? QString() : QStringLiteral(": ") + qt_error_string(systemError);
    diagnostics::note("No database: ", diagnostics::unitsOf(reason), diagnostics::unitsOf(detail));
    qDebug("No database: %s", qUtf8Printable(reason + detail));
}

void logUnavailable(sqlite3 *connection)
{
    const auto *message = static_cast<const char16_t *>(sqlite3_errmsg16(connection));
    // Other errors leave the number of an earlier one.
    const int code = sqlite3_errcode(connection) & 0xff;
    const bool isOfSystem = code == SQLITE_IOERR || code == SQLITE_CANTOPEN;
    logUnavailable(QString::fromUtf16(message), isOfSystem ? sqlite3_system_errno(connection) : 0);
}

int execute(sqlite3 *connection, const char *statements)
{
    return sqlite3_exec(connection, statements, nullptr, nullptr, nullptr);
}

bool useLog(sqlite3 *connection)
{
    sqlite3_busy_timeout(connection, logTimeoutMs);
    const auto waitAgain = qScopeGuard([connection] { sqlite3_busy_timeout(connection, busyTimeoutMs); });
    execute(connection, "PRAGMA journal_mode=WAL");
    if (execute(connection, readAnything) == SQLITE_OK)
        return true;
    // The file says now that it has a log, and the memory that a log needs beside it is not to be had: on some file
    // systems there is none, and a disk may have been filled by the change. For a file that it has for itself SQLite
    // takes memory of its own, when it opens the log anew; with that it can change the file back.
    execute(connection, "PRAGMA locking_mode=EXCLUSIVE");
    execute(connection, closeLog);
    execute(connection, readAnything);
    execute(connection, closeLog);
    execute(connection, "PRAGMA locking_mode=NORMAL");
    return execute(connection, readAnything) == SQLITE_OK;
}

void putLogAway(sqlite3 *connection)
{
    // The side files of one that was moved or deleted meanwhile have the names of another file's.
    int isMoved = 1;
    sqlite3_file_control(connection, "main", SQLITE_FCNTL_HAS_MOVED, &isMoved);
    if (isMoved != 0)
        return;
    sqlite3_busy_timeout(connection, 0);
    if (execute(connection, closeLog) == SQLITE_OK)
        return;
    // Another process that uses the file will do it when it exits. It does not know what was written here: until then
    // nobody would bring that into the main file.
    sqlite3_busy_timeout(connection, exitTimeoutMs);
    sqlite3_wal_checkpoint_v2(connection, nullptr, SQLITE_CHECKPOINT_FULL, nullptr, nullptr);
}

} // namespace tarnelLib::controller::file
