#pragma once

#include "demo/text.h"

#include <optional>
#include <vector>

namespace demo {

/// A value of an optional field, as the library hands it out; a dash where the record has none.
template <class Value>
std::string number(const Value *value)
{
    return value == nullptr ? "–" : std::to_string(*value);
}

std::string yesOrNo(const bool *value);

/// Rows of cells, printed with aligned columns under a heading.
class Table
{
public:
    explicit Table(std::vector<std::string> heading) : m_rows{std::move(heading)} {}

    void add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    void print() const;

private:
    std::vector<std::vector<std::string>> m_rows; ///< The first is the heading.
};

/// Prints a paragraph, broken into lines.
void say(const std::string &paragraph);

/// Prints lines as they are, indented.
void show(const std::vector<std::string> &lines);

/// Prints the heading of a chapter.
void chapter(const std::string &title);

} // namespace demo
