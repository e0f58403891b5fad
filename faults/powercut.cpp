#include "faults/powercut.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace faults {

namespace {

constexpr std::size_t sectorSize = 512;

} // namespace

void PowerCut::Change::applyTo(std::optional<std::string> &content) const
{
    if (kind == Kind::Remove) {
        content.reset();
        return;
    }
    if (!content)
        content.emplace();
    if (kind == Kind::Truncate) {
        content->resize(offset);
        return;
    }
    content->resize(std::max(content->size(), offset + bytes.size()));
    content->replace(offset, bytes.size(), bytes);
}

void PowerCut::isOpened(const std::string &path)
{
    const std::lock_guard lock(m_mutex);
    const auto [place, isNew] = m_files.try_emplace(path);
    std::ifstream file(path, std::ios::binary);
    if (!isNew || !file)
        return;
    std::string content(std::istreambuf_iterator<char>(file), {});
    if (content.empty()) // Just made, so that its directory need not know it.
        place->second.changes.push_back({Kind::Write});
    else
        place->second.flushed = std::move(content);
}

void PowerCut::isWritten(const std::string &path, std::size_t offset, std::string bytes)
{
    note(path, {Kind::Write, offset, std::move(bytes)});
}

void PowerCut::isTruncated(const std::string &path, std::size_t size)
{
    note(path, {Kind::Truncate, size});
}

void PowerCut::isRemoved(const std::string &path)
{
    note(path, {Kind::Remove});
}

void PowerCut::isFlushed(const std::string &path)
{
    const std::lock_guard lock(m_mutex);
    File &file = m_files[path];
    for (const Change &change : file.changes)
        change.applyTo(file.flushed);
    file.changes.clear();
}

void PowerCut::isDirectoryFlushed()
{
    const std::lock_guard lock(m_mutex);
    for (auto &[path, file] : m_files) {
        const auto removal = std::ranges::find(file.changes.rbegin(), file.changes.rend(), Kind::Remove, &Change::kind);
        if (removal != file.changes.rend())
            file.flushed.reset();
        file.changes.erase(file.changes.begin(), removal.base());
        if (!file.flushed && !file.changes.empty())
            file.flushed.emplace();
    }
}

void PowerCut::note(const std::string &path, Change change)
{
    const std::lock_guard lock(m_mutex);
    m_files[path].changes.push_back(std::move(change));
}

void PowerCut::leaveFiles(std::mt19937 &random)
{
    const std::lock_guard lock(m_mutex);
    for (const auto &[path, file] : m_files) {
        std::filesystem::remove(path);
        std::filesystem::remove(path + "-shm");
        if (const std::optional<std::string> content = afterCut(file, random))
            std::ofstream(path, std::ios::binary) << *content;
    }
    m_files.clear();
}

std::vector<PowerCut::Change> PowerCut::sectorsOf(const Change &change)
{
    if (change.bytes.empty())
        return {change};
    std::vector<Change> sectors;
    for (std::size_t begin = 0; begin < change.bytes.size(); begin += sectors.back().bytes.size()) {
        const std::size_t offset = change.offset + begin;
        sectors.push_back({Kind::Write, offset, change.bytes.substr(begin, sectorSize - offset % sectorSize)});
    }
    return sectors;
}

std::optional<std::string> PowerCut::afterCut(const File &file, std::mt19937 &random)
{
    std::vector<Change> sectors;
    for (const Change &change : file.changes)
        std::ranges::move(sectorsOf(change), std::back_inserter(sectors));
    std::optional<std::string> content = file.flushed;
    const bool isInOrder = random() % 2 == 0;
    const std::size_t end = isInOrder ? random() % (sectors.size() + 1) : sectors.size();
    for (std::size_t i = 0; i < end; ++i) {
        const bool isKept = isInOrder || random() % 2 == 0;
        if (isKept)
            sectors[i].applyTo(content);
        else if (sectors[i].kind == Kind::Remove) // What follows was another file, under the same name.
            break;
    }
    return content;
}

} // namespace faults
