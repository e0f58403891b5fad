#include "demo/table.h"

#include <algorithm>
#include <iostream>
#include <sstream>

namespace demo {

namespace {

constexpr std::size_t lineWidth = 100;

std::string ruled(std::size_t width)
{
    std::string rule;
    for (std::size_t i = 0; i < width; ++i)
        rule += "─";
    return rule;
}

} // namespace

std::string yesOrNo(const bool *value)
{
    return value == nullptr ? "–" : *value ? "yes" : "no";
}

void Table::print() const
{
    std::vector<std::size_t> widths(m_rows.front().size());
    for (const std::vector<std::string> &row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    const auto printRow = [&](const std::vector<std::string> &row) {
        std::string line = "   ";
        for (std::size_t i = 0; i < row.size(); ++i)
            line.append(" ").append(row[i]).append(widths[i] - displayWidth(row[i]) + 1, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        std::cout << line << '\n';
    };
    std::cout << '\n';
    printRow(m_rows.front());
    std::vector<std::string> rules;
    for (const std::size_t width : widths)
        rules.push_back(ruled(width));
    printRow(rules);
    for (auto row = m_rows.begin() + 1; row != m_rows.end(); ++row)
        printRow(*row);
    std::cout << std::flush;
}

void say(const std::string &paragraph)
{
    std::cout << '\n';
    std::istringstream words(paragraph);
    std::string word;
    std::size_t column = 0;
    while (words >> word) {
        const std::size_t width = displayWidth(word);
        if (column > 0 && column + 1 + width > lineWidth) {
            std::cout << '\n';
            column = 0;
        }
        if (column > 0)
            std::cout << ' ';
        std::cout << word;
        column += width + (column > 0 ? 1 : 0);
    }
    std::cout << std::endl;
}

void chapter(const std::string &title)
{
    std::cout << "\n── " << title << ' ' << ruled(lineWidth - displayWidth(title) - 4) << std::endl;
}

void show(const std::vector<std::string> &lines)
{
    std::cout << '\n';
    for (const std::string &line : lines)
        std::cout << "    " << line << '\n';
    std::cout << std::flush;
}

} // namespace demo
