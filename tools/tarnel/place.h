#pragma once

#include <cstdint>
#include <filesystem>

#include <ctime>

namespace tool {

/// A cache as it lies on the disk, as far as the system tells it: nothing is opened as a database.
struct Place {
    std::filesystem::path file; ///< Without links.
    std::uint64_t bytes = 0;
    std::uint64_t logBytes = 0;     ///< Of what has been written and is not yet in the main file, `-wal`.
    std::uint64_t memoryBytes = 0;  ///< Of what clients share about the log, `-shm`.
    std::uint64_t journalBytes = 0; ///< Of what a write that has not ended would have to undo, `-journal`.
    std::uint64_t number = 0;       ///< Of the file in its file system.
    std::timespec modified{};       ///< The main file.
    std::timespec logModified{};    ///< The log, or nothing.
    bool isInUse = false;           ///< Another process has the file locked, as a client has that writes a log.

    /// Looks at a cache, or at that of a directory. Not while this process has a connection to it that holds locks:
    /// looking would drop them.
    explicit Place(const std::filesystem::path &path);

    /// Whether the file holds all there is, so that nothing beside it is to be read.
    [[nodiscard]] bool isComplete() const { return logBytes == 0 && journalBytes == 0; }

    /// Whether nothing was written in between.
    [[nodiscard]] bool isSameAs(const Place &other) const;

    /// A file beside the main file.
    [[nodiscard]] std::filesystem::path beside(const char *suffix) const;
};

} // namespace tool
