#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// What a power cut leaves of files: all that was flushed, and any part of what was not.
namespace faults {

/// The files that SQLite writes, as far as the disk is sure to hold them, and what it may hold besides.
class PowerCut
{
public:
    /// Before a file is opened: what it holds until now is flushed.
    void isOpened(const std::string &path);
    void isWritten(const std::string &path, std::size_t offset, std::string bytes);
    void isTruncated(const std::string &path, std::size_t size);
    void isRemoved(const std::string &path);
    void isFlushed(const std::string &path);
    void isDirectoryFlushed();

    /// Leaves the files as they may be after the cut: of each write that was not flushed nothing, all, or some sectors,
    /// in the order of writing or in any other.
    void leaveFiles(std::mt19937 &random);

private:
    enum class Kind { Write, Truncate, Remove };

    struct Change {
        Kind kind;
        std::size_t offset = 0; ///< Or the size.
        std::string bytes = {};

        void applyTo(std::optional<std::string> &content) const;
    };

    struct File {
        std::optional<std::string> flushed;
        std::vector<Change> changes; ///< Since then.
    };

    static std::optional<std::string> afterCut(const File &file, std::mt19937 &random);
    static std::vector<Change> sectorsOf(const Change &change);
    void note(const std::string &path, Change change);

    std::mutex m_mutex;
    std::map<std::string, File> m_files;
};

} // namespace faults
