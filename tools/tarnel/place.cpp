#include "tools/tarnel/place.h"

#include "storage/databasefile.h"
#include "tools/tarnel/command.h"

#include <fmt/format.h>

#include <QFile>

#include <cerrno>
#include <cstring>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

/// What the system says of a file beside the main file; nothing, if it is not there.
struct stat statusOf(const std::filesystem::path &path)
{
    struct stat status = {};
    static_cast<void>(::stat(path.c_str(), &status));
    return status;
}

bool isSame(const std::timespec &left, const std::timespec &right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

std::string nameOf(uid_t user)
{
    const passwd *const entry = ::getpwuid(user);
    return entry != nullptr ? entry->pw_name : fmt::format("#{}", user);
}

std::filesystem::path resolved(const std::filesystem::path &path)
{
    std::error_code error;
    const bool isDirectory = std::filesystem::is_directory(path, error);
    const std::filesystem::path file = isDirectory ? path / "CacheDb" : path;
    std::filesystem::path canonical = std::filesystem::canonical(file, error);
    if (error == std::errc::no_such_file_or_directory)
        throw Obstacle(fmt::format("there is no {}", file.string()),
                       "name the file, or the directory in which it is: tarnel info /var/lib/client");
    if (error)
        throw Obstacle(fmt::format("{}: {}", file.string(), error.message()), "name a file that you may read");
    return canonical;
}

} // namespace

Place::Place(const std::filesystem::path &path) : file(resolved(path))
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        throw Obstacle(fmt::format("{}: {}", file.string(), std::strerror(errno)), "name a file that you may read");
    if (!S_ISREG(status.st_mode))
        throw Obstacle(fmt::format("{} is no file", file.string()), "name the file CacheDb, or its directory");
    if (::access(file.c_str(), R_OK) != 0)
        throw Obstacle(fmt::format("{} cannot be read: {}", file.string(), std::strerror(errno)),
                       fmt::format("it belongs to {0}: sudo -u {0} tarnel …", nameOf(status.st_uid)));
    bytes = static_cast<std::uint64_t>(status.st_size);
    number = status.st_ino;
    modified = status.st_mtim;
    const struct stat log = statusOf(beside("-wal"));
    logBytes = static_cast<std::uint64_t>(log.st_size);
    logModified = log.st_mtim;
    memoryBytes = static_cast<std::uint64_t>(statusOf(beside("-shm")).st_size);
    journalBytes = static_cast<std::uint64_t>(statusOf(beside("-journal")).st_size);
    isInUse = tarnelLib::controller::file::isInUse(QFile::decodeName(file.c_str()));
}

bool Place::isSameAs(const Place &other) const
{
    return number == other.number && bytes == other.bytes && logBytes == other.logBytes &&
           journalBytes == other.journalBytes && isSame(modified, other.modified) &&
           isSame(logModified, other.logModified);
}

std::filesystem::path Place::beside(const char *suffix) const
{
    std::filesystem::path path = file;
    path += suffix;
    return path;
}

} // namespace tool
