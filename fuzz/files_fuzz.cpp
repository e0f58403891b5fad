// Searches for a file with which a launch, or a call after it, crashes, leaks, or departs from the contract.
//
// The files are ones that the library has left, changed in a few places: as small as that an input can be searched
// well. Its first byte chooses the file and what is called, each six others are a change.

#include "cache.h"
#include "contract.h"
#include "spoiledfile.h"

#include <tarnel/tarnel.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

namespace {

/// The main file, and the log that a killed process leaves beside it.
struct Files {
    std::string main;
    std::string log;
};

/// A file that was left by an exit, and one that was left by a kill.
std::array<Files, 2> makeFiles(fuzz::Cache &cache)
{
    constexpr int madeUp = 10;
    cache.launch();
    for (const char id : {'1', '2', '3'})
        fuzz::addOfEverything(id, madeUp);
    cache.exit();
    Files exited{fuzz::readFile("CacheDb"), {}};
    cache.launch();
    fuzz::addOfEverything('4', madeUp);
    Files killed{fuzz::readFile("CacheDb"), fuzz::readFile("CacheDb-wal")};
    cache.exit();
    return {exited, killed};
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
    for (std::size_t i = 1; i + fuzz::Change::extent <= size; i += fuzz::Change::extent) {
        // A page of the log that was changed ends the log for SQLite.
        const bool isLog = data[i] >= 0xe0;
        fuzz::spoil(isLog ? files.log : files.main, fuzz::Change(data + i, fuzz::Change::extent));
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
            callChecked(function, fuzz::Call(fuzz::fittingCall(function, '1')), fuzz::Found::SpoiledFile);
    }
    cache.exit();
    return 0;
}
