#include "tools/tarnel/cachefile.h"

#include "storage/databasefile.h"
#include "tools/tarnel/command.h"
#include "tools/tarnel/launchverdict.h"

#include <SQLiteCpp/Backup.h>
#include <fmt/format.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace tool {

namespace {

namespace file = tarnelLib::controller::file;

constexpr const char *readAnything = "SELECT 1 FROM sqlite_master LIMIT 1";

/// How long a file is tried again that is never found in one state, and how long one is waited for that is locked.
constexpr std::chrono::seconds patience(5);
constexpr int busyTimeoutMs = 5000;
constexpr std::chrono::milliseconds pause(20);

/// As the superuser SQLite gives what it opens beside a file to the file's owner, also if it belongs to it already:
/// that changes a time.
void leaveOwnersAlone()
{
    sqlite3_vfs *const system = sqlite3_vfs_find(nullptr);
    const auto doNothing = +[](int, uid_t, gid_t) { return 0; };
    system->xSetSystemCall(system, "fchown", reinterpret_cast<sqlite3_syscall_ptr>(doNothing));
}

/// The file's name for SQLite, with parameters.
std::string uri(const std::filesystem::path &path, std::string_view parameters)
{
    std::string text = "file:";
    for (const char character : path.native()) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > 0x7f || character == '%' || character == '?' || character == '#')
            text += fmt::format("%{:02x}", byte);
        else
            text += character;
    }
    return text.append("?").append(parameters);
}

/// A directory that nobody else can look into. It goes before the tool can be ended by a signal: what is copied there
/// are names and phones.
class PrivateDirectory
{
public:
    PrivateDirectory()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&signals, number);
        pthread_sigmask(SIG_BLOCK, &signals, &m_signals);
        std::string name = std::filesystem::temp_directory_path() / "tarnel-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), name);
        m_path = name;
    }
    PrivateDirectory(const PrivateDirectory &) = delete;
    PrivateDirectory &operator=(const PrivateDirectory &) = delete;
    ~PrivateDirectory()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
        pthread_sigmask(SIG_SETMASK, &m_signals, nullptr);
    }

    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
    sigset_t m_signals{};
};

void copyAside(const std::filesystem::path &from, const std::filesystem::path &to)
{
    std::filesystem::copy_file(from, to);
    // Of a file that its owner cannot write the copy could not be recovered.
    std::filesystem::permissions(to, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

} // namespace

CacheFile::CacheFile(const std::filesystem::path &path, Look look) : m_place(path)
{
    leaveOwnersAlone();
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!open(look)) {
        if (std::chrono::steady_clock::now() >= end)
            throw Obstacle(
                fmt::format("{} is written without rest, and not by a client that writes a log", m_place.file.string()),
                "type it again when the program that writes it is done");
        std::this_thread::sleep_for(pause);
        m_place = Place(m_place.file);
    }
}

bool CacheFile::open(Look look)
{
    if (m_place.isInUse)
        return openLive(look);
    return m_place.isComplete() ? openInPlace() : openCopyOfFiles();
}

bool CacheFile::openInPlace()
{
    m_reading = Reading::InPlace;
    use(SQLite::Database(uri(m_place.file, "immutable=1"), SQLite::OPEN_READONLY | SQLite::OPEN_URI));
    return true;
}

bool CacheFile::openLive(Look look)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    for (bool isTried = false;; isTried = true) {
        // Where no client has ever read, there is nothing that a reader could share without writing. Clients fold
        // their log when they rest, and it can be read then; others must bear that this reader makes its mark.
        const bool mayWrite = std::chrono::steady_clock::now() >= end;
        SQLite::Database live(uri(m_place.file, mayWrite ? "readonly_shm=0" : "readonly_shm=1"),
                              SQLite::OPEN_READONLY | SQLite::OPEN_URI, busyTimeoutMs);
        const int code = file::execute(live.getHandle(), readAnything);
        if ((code & 0xff) == SQLITE_READONLY && !mayWrite) {
            std::this_thread::sleep_for(pause);
            continue;
        }
        if ((code & 0xff) == SQLITE_BUSY)
            throw Obstacle(fmt::format("{} is locked by another program", m_place.file.string()),
                           "type it again when the program that writes it is done");
        if (code != SQLITE_OK && !isTried)
            continue; // The client has just ended, perhaps, or another has just begun.
        if (look == Look::Short || code != SQLITE_OK) {
            m_reading = Reading::Live;
            use(std::move(live));
            return true;
        }
        // Without a name, and so without a place that could be left behind.
        SQLite::Database copied("", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        const int copying = SQLite::Backup(copied, live).executeStep(-1);
        if (copying != SQLITE_DONE)
            return false;
        m_reading = Reading::LiveCopy;
        use(std::move(copied));
        return true;
    }
}

bool CacheFile::openCopyOfFiles()
{
    const PrivateDirectory directory;
    const std::filesystem::path copied = directory.path() / "CacheDb";
    copyAside(m_place.file, copied);
    for (const char *suffix : {"-wal", "-journal"}) {
        std::error_code error;
        if (std::filesystem::exists(m_place.beside(suffix), error))
            copyAside(m_place.beside(suffix), copied.native() + suffix);
    }
    const Place now(m_place.file);
    if (now.isInUse || !now.isSameAs(m_place))
        return false;
    m_reading = Reading::RecoveredCopy;
    // The first read recovers it, and has all of its files open: their names can go.
    use(SQLite::Database(copied.native(), SQLite::OPEN_READWRITE));
    return true;
}

void CacheFile::use(SQLite::Database &&database)
{
    m_database.emplace(std::move(database));
    m_code = file::execute(m_database->getHandle(), readAnything);
    file::execute(m_database->getHandle(), "PRAGMA query_only=1; PRAGMA cache_size=-65536");
    m_connection.attach(m_database->getHandle());
}

void CacheFile::requireSound()
{
    const LaunchVerdict verdict = launchVerdict(*this);
    if (verdict.isRefused)
        throw Obstacle(fmt::format("{} cannot be used: {}", m_place.file.string(), verdict.reason),
                       "`tarnel info` says more, `tarnel check` all that is wrong with it");
}

void CacheFile::assertUnchanged() const
{
    if (m_reading != Reading::InPlace)
        return;
    // The connection has no locks that the look could drop.
    if (!Place(m_place.file).isSameAs(m_place))
        throw Obstacle(fmt::format("{} was written to while it was read", m_place.file.string()),
                       "what has been printed may be of two states of it: type it again");
}

} // namespace tool
