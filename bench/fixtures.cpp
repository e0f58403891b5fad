#include "bench/fixtures.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace bench {

namespace fs = std::filesystem;

namespace {

void remove(const char *file)
{
    for (const char *suffix : {"", "-wal", "-shm"})
        fs::remove(std::string(file) + suffix);
}

/// What is not on the disk yet would be written while the clock runs.
void copyToDisk(const fs::path &from, const char *to)
{
    remove(to);
    fs::copy_file(from, to);
    const int file = ::open(to, O_RDONLY | O_CLOEXEC);
    if (file < 0 || ::fsync(file) != 0)
        throw std::runtime_error("a file cannot be brought to the disk");
    ::close(file);
}

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

/// The first column of all rows.
std::vector<std::string> readColumn(const Connection &connection, const std::string &sql)
{
    std::vector<std::string> values;
    const auto add = [](void *target, int, char **columns, char **) {
        static_cast<std::vector<std::string> *>(target)->emplace_back(columns[0] == nullptr ? "" : columns[0]);
        return 0;
    };
    if (sqlite3_exec(connection.get(), sql.c_str(), add, &values, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection.get()));
    return values;
}

} // namespace

void Fixtures::provide(const Fixture &fixture)
{
    fs::path &file = m_files[fixture.name];
    if (file.empty()) {
        remove(libraryFile);
        {
            Library library;
            fixture.fill(library);
        }
        file = fixture.name + ".fixture";
        fs::rename(libraryFile, file); // The last connection has folded the log away.
    }
    copyToDisk(file, libraryFile);
    copyToDisk(file, baselineFile);
}

bool haveSameContent()
{
    sqlite3 *handle = nullptr;
    sqlite3_open(libraryFile, &handle);
    const Connection connection(handle, sqlite3_close);
    readColumn(connection, std::string("ATTACH '") + baselineFile + "' AS baseline");
    for (const std::string &table :
         readColumn(connection, "SELECT name FROM main.sqlite_master WHERE type = 'table'")) {
        const std::string ours = "SELECT * FROM main." + table;
        const std::string theirs = "SELECT * FROM baseline." + table;
        if (!readColumn(connection, std::string(ours).append(" EXCEPT ").append(theirs)).empty() ||
            !readColumn(connection, std::string(theirs).append(" EXCEPT ").append(ours)).empty())
            return false;
    }
    return readColumn(connection, "SELECT name FROM main.sqlite_master EXCEPT SELECT name FROM baseline.sqlite_master")
        .empty();
}

} // namespace bench
