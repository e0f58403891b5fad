#include "tools/tarnel/output.h"

#include "diagnostics/fixedtext.h"

#include <QString>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <system_error>
#include <unistd.h>

namespace tool::output {

namespace {

[[noreturn]] void fail()
{
    if (errno == EPIPE)
        throw Closed();
    throw std::system_error(errno, std::generic_category(), "the output cannot be written");
}

/// Where a text is to be cut so that it takes no more than so many columns.
struct Cut {
    std::size_t bytes;
    std::size_t columns;
};

Cut cut(std::string_view text, std::size_t most)
{
    std::mbstate_t state{};
    Cut found{0, 0};
    while (found.bytes < text.size()) {
        wchar_t character = 0;
        std::size_t bytes = std::mbrtowc(&character, text.data() + found.bytes, text.size() - found.bytes, &state);
        int columns = 1;
        if (bytes == 0 || bytes > text.size()) { // A zero, or what is no UTF-8.
            bytes = 1;
            state = {};
        } else {
            columns = std::max(0, ::wcwidth(character));
        }
        if (found.columns + static_cast<std::size_t>(columns) > most)
            break;
        found.columns += static_cast<std::size_t>(columns);
        found.bytes += bytes;
    }
    return found;
}

std::size_t missing(std::string_view text, std::size_t columns)
{
    const std::size_t taken = width(text);
    return columns > taken ? columns - taken : 0;
}

} // namespace

void write(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) < text.size())
        fail();
}

void writeJson(const Json &json, bool isIndented)
{
    write(json.dump(isIndented ? 2 : -1, ' ', false, Json::error_handler_t::replace) + "\n");
}

void flush()
{
    if (std::fflush(stdout) != 0)
        fail();
}

void finish()
{
    flush();
}

bool isColoured()
{
    static const bool isWanted = [] {
        const char *const refusal = std::getenv("NO_COLOR");
        const char *const terminal = std::getenv("TERM");
        return ::isatty(STDOUT_FILENO) == 1 && (refusal == nullptr || *refusal == '\0') &&
               (terminal == nullptr || std::string_view(terminal) != "dumb");
    }();
    return isWanted;
}

std::string styled(const fmt::text_style &style, std::string_view text)
{
    return isColoured() ? fmt::format(style, "{}", text) : std::string(text);
}

std::size_t width(std::string_view text)
{
    return cut(text, text.size() * 2).columns;
}

std::string safe(std::string_view text, std::size_t most)
{
    tarnelLib::diagnostics::FixedText<4096> shown;
    const QString units = QString::fromUtf8(text.data(), static_cast<int>(std::min<std::size_t>(text.size(), 4096)));
    shown.append(
        std::u16string_view(reinterpret_cast<const char16_t *>(units.utf16()), static_cast<std::size_t>(units.size())));
    const Cut whole = cut(shown.view(), most);
    if (whole.bytes == shown.view().size())
        return std::string(shown.view());
    return fmt::format("{}…", shown.view().substr(0, cut(shown.view(), most - 1).bytes));
}

std::string padded(std::string_view text, std::size_t columns)
{
    return fmt::format("{}{:{}}", text, "", missing(text, columns));
}

std::string rightAligned(std::string_view text, std::size_t columns)
{
    return fmt::format("{:{}}{}", "", missing(text, columns), text);
}

std::string grouped(std::uint64_t number)
{
    return number < 1000 ? std::to_string(number) : fmt::format("{},{:03}", grouped(number / 1000), number % 1000);
}

std::string size(std::uint64_t bytes)
{
    if (bytes < 10240)
        return fmt::format("{} bytes", grouped(bytes));
    constexpr std::array units = {"KiB", "MiB", "GiB"};
    double amount = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    for (; amount >= 1024 && unit + 1 < units.size(); ++unit)
        amount /= 1024;
    return fmt::format("{:.1f} {}", amount, units.at(unit));
}

void writePairs(const std::vector<std::pair<std::string, std::string>> &pairs)
{
    std::size_t columns = 0;
    for (const auto &[name, text] : pairs)
        columns = std::max(columns, width(name));
    for (const auto &[name, text] : pairs)
        print("{}  {}\n", styled(fmt::emphasis::bold, padded(name, columns)), text);
}

void Table::write() const
{
    const auto isNumber = [](const std::string &cell) {
        return cell.find_first_not_of("0123456789.,-+%") == std::string::npos;
    };
    std::string headings;
    std::vector<std::string> lines(m_rows.size());
    for (std::size_t column = 0; column < m_headings.size(); ++column) {
        std::size_t columns = width(m_headings[column]);
        bool isRight = true;
        for (const std::vector<std::string> &row : m_rows) {
            columns = std::max(columns, width(row.at(column)));
            isRight = isRight && isNumber(row.at(column));
        }
        const auto place = [&](std::string &line, const std::string &cell) {
            line += line.empty() ? "" : "  ";
            line += isRight ? rightAligned(cell, columns) : padded(cell, columns);
        };
        place(headings, m_headings[column]);
        for (std::size_t row = 0; row < m_rows.size(); ++row)
            place(lines[row], m_rows[row].at(column));
    }
    print("{}\n", styled(fmt::emphasis::bold, headings));
    for (const std::string &line : lines)
        print("{}\n", std::string_view(line).substr(0, line.find_last_not_of(' ') + 1));
}

} // namespace tool::output
