#pragma once

#include <fmt/color.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// What goes to the standard output.
namespace tool::output {

/// JSON with the members in the order in which they were set.
using Json = nlohmann::ordered_json;

/// That nobody reads the output any more.
struct Closed {
};

/// Writes a text as it is; throws `Closed`, or the system's error.
void write(std::string_view text);

template <class... Arguments>
void print(fmt::format_string<Arguments...> format, Arguments &&...arguments)
{
    write(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// Writes JSON in one line, or in several that people can read. What is no UTF-8 becomes U+FFFD.
void writeJson(const Json &json, bool isIndented = true);

/// Brings out what has been written so far.
void flush();
/// The same at the end, when a failure is one.
void finish();

/// Whether colours are wanted: on a terminal, unless the environment says `NO_COLOR`.
[[nodiscard]] bool isColoured();

/// The text in a style, where colours are wanted.
[[nodiscard]] std::string styled(const fmt::text_style &style, std::string_view text);

/// How many columns of a terminal a text takes.
[[nodiscard]] std::size_t width(std::string_view text);

/// A text of the file, safe to show on a terminal: what it might obey stands there as its number. Longer ones than
/// `most` columns are cut.
[[nodiscard]] std::string safe(std::string_view text, std::size_t most = 200);

/// The text with blanks to a width: behind it, or before it.
[[nodiscard]] std::string padded(std::string_view text, std::size_t columns);
[[nodiscard]] std::string rightAligned(std::string_view text, std::size_t columns);

/// A number with its thousands apart, as people read it.
[[nodiscard]] std::string grouped(std::uint64_t number);
/// Of bytes, with a unit.
[[nodiscard]] std::string size(std::uint64_t bytes);

/// Writes rows of a name and what there is to say, one below the other.
void writePairs(const std::vector<std::pair<std::string, std::string>> &pairs);

/// Rows of cells, each column as wide as its widest cell; columns of numbers stand at the right.
class Table
{
public:
    explicit Table(std::vector<std::string> headings) : m_headings(std::move(headings)) {}

    void add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    void write() const;

private:
    std::vector<std::string> m_headings;
    std::vector<std::vector<std::string>> m_rows;
};

} // namespace tool::output
