// Searches for a state of the file in which a read crashes, leaks, or departs from the contract.
//
// The file is changed beneath a running cache, so that there are fifty times as many inputs as with a launch for each,
// which files_fuzz.cpp does. An input is nothing but changes.

#include "cache.h"
#include "contract.h"
#include "spoiledfile.h"

#include <tarnel/tarnel.h>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

namespace {

/// The file of the running cache, all of it in the main file, and none in the log.
class RunningFile
{
public:
    RunningFile()
    {
        sqlite3_open("CacheDb", &m_writer);
        sqlite3_busy_timeout(m_writer, 5000); // The cache may be folding its log.
        execute("CREATE TABLE turn(number)");
        execute("INSERT INTO turn VALUES(0)");
        execute("PRAGMA wal_checkpoint(TRUNCATE)");
        if (std::filesystem::file_size("CacheDb-wal") != 0)
            fuzz::fail("wal_checkpoint", "pages are left in the log");
        sqlite3_prepare_v2(m_writer, "UPDATE turn SET number=number+1", -1, &m_turn, nullptr);
        // Opened once and never closed: with that the process's locks of the file would go.
        m_descriptor = open("CacheDb", O_RDWR | O_CLOEXEC);
        m_original.resize(std::filesystem::file_size("CacheDb"));
        if (pread(m_descriptor, m_original.data(), m_original.size(), 0) != static_cast<ssize_t>(m_original.size()))
            fuzz::fail("pread", "the file was not read");
    }

    [[nodiscard]] const std::string &original() const { return m_original; }

    [[nodiscard]] const std::vector<std::size_t> &spoiledPages() const { return m_spoiledPages; }

    /// Gives the file another content, which the next read sees.
    void change(const std::string &content)
    {
        for (const std::size_t page : m_spoiledPages)
            write(page, pageOf(m_original, page));
        // Connections forget what they have read of the file when another has written. That one may have to read, too.
        if (sqlite3_step(m_turn) != SQLITE_DONE || sqlite3_reset(m_turn) != SQLITE_OK)
            fuzz::fail("UPDATE", sqlite3_errmsg(m_writer));
        m_spoiledPages.clear();
        for (std::size_t page = 0; page * fuzz::pageSize < m_original.size(); ++page) {
            if (const std::string_view spoiled = pageOf(content, page); spoiled != pageOf(m_original, page)) {
                write(page, spoiled);
                m_spoiledPages.push_back(page);
            }
        }
        if (content.size() < m_original.size() && ftruncate(m_descriptor, static_cast<off_t>(content.size())) != 0)
            fuzz::fail("ftruncate", "the file was not cut");
    }

private:
    void write(std::size_t page, std::string_view bytes) const
    {
        if (pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(page * fuzz::pageSize)) < 0)
            fuzz::fail("pwrite", "the file was not written");
    }

    /// As much of it as there is.
    static std::string_view pageOf(std::string_view content, std::size_t page)
    {
        return content.substr(std::min(page * fuzz::pageSize, content.size()), fuzz::pageSize);
    }

    void execute(const char *sql)
    {
        if (sqlite3_exec(m_writer, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            fuzz::fail(sql, sqlite3_errmsg(m_writer));
    }

    sqlite3 *m_writer = nullptr;
    sqlite3_stmt *m_turn = nullptr;
    int m_descriptor = -1;
    std::string m_original;
    std::vector<std::size_t> m_spoiledPages;
};

/// What a call has answered.
std::vector<std::string> answerTo(const std::string &line, fuzz::Found found)
{
    const fuzz::Call call(line);
    fuzz::Answer answer = callChecked(*fuzz::findFunction(call.name), call, found);
    answer.records.push_back(std::to_string(answer.code));
    return answer.records;
}

/// The calls that read, and which pages they do it on.
class Reads
{
public:
    explicit Reads(RunningFile &file)
    {
        for (const fuzz::Function &function : fuzz::functions()) {
            if (function.name.starts_with("get"))
                m_lines.push_back(fuzz::fittingCall(function, '1'));
        }
        for (const std::string &line : m_lines)
            m_soundAnswers.push_back(answerTo(line, fuzz::Found::SoundFile));
        m_isRead.emplace_back(m_lines.size(), true);
        for (std::size_t page = fuzz::pageSize; page < file.original().size(); page += fuzz::pageSize) {
            std::string without = file.original();
            without.replace(page, fuzz::pageSize, fuzz::pageSize, '\0');
            file.change(without);
            std::vector<bool> &isRead = m_isRead.emplace_back();
            for (std::size_t i = 0; i < m_lines.size(); ++i)
                isRead.push_back(answerTo(m_lines[i], fuzz::Found::SpoiledFile) != m_soundAnswers[i]);
        }
    }

    /// Reads what the spoiled pages are part of: all else reads what it has read before.
    void readSpoiled(const RunningFile &file) const
    {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (std::ranges::any_of(file.spoiledPages(), [&](std::size_t page) { return m_isRead[page][i]; }))
                answerTo(m_lines[i], fuzz::Found::SpoiledFile);
        }
    }

    void readSound() const
    {
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (answerTo(m_lines[i], fuzz::Found::SoundFile) != m_soundAnswers[i])
                fuzz::fail(m_lines[i], "another answer than before the file was spoiled and mended");
        }
    }

private:
    std::vector<std::string> m_lines;
    std::vector<std::vector<std::string>> m_soundAnswers;
    std::vector<std::vector<bool>> m_isRead; ///< For each page: whether the answers are others when it holds nothing.
};

/// Leaves a cache running on a file that holds records of every kind.
bool fillFile()
{
    auto &cache = *new fuzz::Cache;
    cache.launch();
    for (const char id : {'1', '2', '3', '4'})
        fuzz::addOfEverything(id, 2);
    cache.exit();
    return cache.launch() == TARNEL_SUCCESS;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const bool isFilled = fillFile();
    if (!isFilled)
        fuzz::fail("launchCache", "another result than 0 for a sound file");
    static RunningFile &file = *new RunningFile;
    static const Reads reads(file);

    static std::string content; // A large block is slow to get under AddressSanitizer.
    content = file.original();
    for (std::size_t i = 0; i + fuzz::Change::extent <= size; i += fuzz::Change::extent)
        fuzz::spoil(content, fuzz::Change(data + i, fuzz::Change::extent));
    // The first page stays. It says whether the tables are still those that a connection knows: one that had met other
    // tables on spoiled pages would not look again when they are mended.
    content.replace(0, fuzz::pageSize, file.original(), 0, fuzz::pageSize);
    file.change(content);
    reads.readSpoiled(file);

    // What a spoiled page leaves behind would stay: there is no need to look for it each time, which takes longer. The
    // first two inputs are empty, and libFuzzer gives up if they reach nothing.
    static unsigned int inputs = 0;
    if (inputs++ % 128 < 2) {
        file.change(file.original());
        reads.readSound();
    }
    return 0;
}
