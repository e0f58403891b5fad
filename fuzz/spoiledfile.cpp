#include "spoiledfile.h"

#include "contract.h"
#include "makecall.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

namespace fuzz {

std::string readFile(const std::string &name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string fittingCall(const Function &function, char id)
{
    static const std::string pattern = readFile(TARNEL_REQUEST);
    std::string line(function.name);
    if (function.texts == 2)
        line += std::string(line.find("Organization") != std::string::npos ? "\torg_id\t" : "\tid\t") + id;
    else if (function.texts == 1)
        std::ranges::replace_copy(pattern, std::back_inserter(line += '\t'), '#', id);
    for (std::size_t i = 0; i < function.numbers; ++i)
        line += std::string("\t") + (function.name == "getEvents" && i == 1 ? '9' : id);
    return line;
}

void addOfEverything(char id, int madeUp)
{
    Generator generator(static_cast<unsigned int>(id));
    for (const Function &function : functions()) {
        if (!function.name.starts_with("add"))
            continue;
        for (int i = 0; i < madeUp; ++i)
            callChecked(function, Call(makeCall(function, generator)), Found::SoundFile);
        callChecked(function, Call(fittingCall(function, id)), Found::SoundFile);
    }
}

namespace {

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

} // namespace

void spoil(std::string &file, Change change)
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

} // namespace fuzz
