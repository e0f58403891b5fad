// Searches for a file with which a launch, or a call after it, crashes, leaks, or departs from the contract.
//
// The files are ones that the library has left, changed in a few places: as small as that an input can be searched
// well. Its first byte chooses the file and what is called, each six others are a change.

#include "cache.h"
#include "contract.h"
#include "makecall.h"

#include <tarnel/tarnel.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>

namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t changeSize = 6;

/// The main file, and the log that a killed process leaves beside it.
struct Files {
    std::string main;
    std::string log;
};

std::string readFile(const std::string &name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A call with a request, a filter and an identifier that fit every function.
void callWith(const fuzz::Function &function, char id, fuzz::Found found)
{
    static const std::string pattern = readFile(TARNEL_REQUEST);
    std::string line(function.name);
    if (function.texts == 2)
        line += std::string(line.find("Organization") != std::string::npos ? "\torg_id\t" : "\tid\t") + id;
    else if (function.texts == 1)
        std::ranges::replace_copy(pattern, std::back_inserter(line += '\t'), '#', id);
    for (std::size_t i = 0; i < function.numbers; ++i)
        line += std::string("\t") + (function.name == "getEvents" && i == 1 ? '9' : id);
    callChecked(function, fuzz::Call(line), found);
}

/// Adds a record of every kind with all its references, and some with values of all sorts.
void addOfEverything(char id)
{
    fuzz::Generator generator(static_cast<unsigned int>(id));
    for (const fuzz::Function &function : fuzz::functions()) {
        if (!function.name.starts_with("add"))
            continue;
        for (int i = 0; i < 10; ++i)
            callChecked(function, fuzz::Call(makeCall(function, generator)), fuzz::Found::SoundFile);
        callWith(function, id, fuzz::Found::SoundFile);
    }
}

/// A file that was left by an exit, and one that was left by a kill.
std::array<Files, 2> makeFiles(fuzz::Cache &cache)
{
    cache.launch();
    for (const char id : {'1', '2', '3'})
        addOfEverything(id);
    cache.exit();
    Files exited{readFile("CacheDb"), {}};
    cache.launch();
    addOfEverything('4');
    Files killed{readFile("CacheDb"), readFile("CacheDb-wal")};
    cache.exit();
    return {exited, killed};
}

void fill(std::string &file, std::size_t begin, std::size_t length, std::uint8_t value)
{
    const std::size_t position = std::min(begin, file.size());
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(position), std::min(length, file.size() - position),
                static_cast<char>(value));
}

std::size_t numberAt(const std::string &file, std::size_t position)
{
    const auto byteAt = [&](std::size_t at) { return at < file.size() ? static_cast<std::uint8_t>(file[at]) : 0U; };
    return byteAt(position) << 8 | byteAt(position + 1);
}

/// Changes the file where SQLite's format has something: a field of its header, of a page's, a cell, a page.
void spoil(std::string &file, std::span<const std::uint8_t, changeSize> change)
{
    const auto [kind, pageNumber, high, low, length, value] =
        std::array{change[0], change[1], change[2], change[3], change[4], change[5]};
    const std::size_t pages = std::max<std::size_t>(file.size() / pageSize, 1);
    const std::size_t page = pageNumber % pages * pageSize;
    const std::size_t offset = static_cast<std::size_t>(high) << 8 | low;
    const std::size_t tree = page == 0 ? 100 : page; // The first page has the file's header in front.
    switch (kind % 8) {
    case 0:
        fill(file, page + offset % pageSize, 1 + length % 16, value);
        break;
    case 1:
        fill(file, offset % 100, 1 + length % 4, value);
        break;
    case 2:
        fill(file, tree + offset % 12, 1, value);
        break;
    case 3: {
        const std::size_t cells = std::max<std::size_t>(numberAt(file, tree + 3), 1);
        const std::size_t cell = numberAt(file, tree + 8 + 2 * (high % cells));
        fill(file, page + cell + low % 64, 1 + length % 9, value); // As long as a number may be.
        break;
    }
    case 4:
        if (file.size() >= pages * pageSize)
            file.replace(page, pageSize, std::string(file, value % pages * pageSize, pageSize));
        break;
    case 5:
        fill(file, page, pageSize, value);
        break;
    case 6: {
        const std::size_t place = offset % (3 * pageSize); // There the schema's text is: a name with a letter changed.
        if (place < file.size())
            file[place] = static_cast<char>(file[place] ^ (1 + value % 7));
        break;
    }
    default:
        file.resize(std::min(page + offset % pageSize, file.size()));
        break;
    }
}

void writeFiles(const Files &files)
{
    for (const char *name : {"CacheDb", "CacheDb-wal", "CacheDb-shm", "CacheDb-journal"})
        std::filesystem::remove_all(name);
    std::ofstream("CacheDb", std::ios::binary) << files.main;
    if (!files.log.empty())
        std::ofstream("CacheDb-wal", std::ios::binary) << files.log;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static fuzz::Cache &cache = *new fuzz::Cache;
    static const std::array<Files, 2> originals = makeFiles(cache);
    const std::uint8_t choice = size > 0 ? data[0] : 0;
    Files files = originals.at(choice % 2);
    for (std::size_t i = 1; i + changeSize <= size; i += changeSize) {
        // A page of the log that was changed ends the log for SQLite.
        const bool isLog = data[i] >= 0xe0;
        spoil(isLog ? files.log : files.main, std::span<const std::uint8_t, changeSize>(data + i, changeSize));
    }
    writeFiles(files);

    constexpr std::array results = {TARNEL_SUCCESS, TARNEL_DATABASE_UNAVAILABLE,
                                    TARNEL_DATABASE_RECREATED_TABLES_INVALID, TARNEL_DATABASE_RECREATED_OPEN_FAILED,
                                    TARNEL_DATABASE_RECREATED_VERSION_MISMATCH};
    const unsigned int result = cache.launch();
    if (std::ranges::find(results, result) == results.end())
        fuzz::fail("launchCache", std::to_string(result));
    const bool areWritesCalled = choice >= 0x80;
    for (const fuzz::Function &function : fuzz::functions()) {
        if (areWritesCalled || function.name.starts_with("get"))
            callWith(function, '1', fuzz::Found::SpoiledFile);
    }
    cache.exit();
    return 0;
}
