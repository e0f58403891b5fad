#pragma once

#include <QChar>

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <string_view>

namespace tarnelLib::diagnostics {

/// A UTF-8 text, zero-terminated, in a block of fixed size: it can be written where memory is short. What does not fit
/// is cut off.
template <std::size_t capacity>
class FixedText
{
public:
    [[nodiscard]] bool isEmpty() const { return m_size == 0; }
    [[nodiscard]] std::string_view view() const { return {m_text.data(), m_size}; }
    [[nodiscard]] const char *terminated() const { return m_text.data(); }

    /// Of the library's own, as it stands.
    void append(std::string_view text)
    {
        std::size_t fitting = m_isCut ? 0 : std::min(text.size(), capacity - 1 - m_size);
        // Not in the middle of a character.
        while (fitting > 0 && fitting < text.size() && (static_cast<unsigned char>(text[fitting]) & 0xc0) == 0x80)
            --fitting;
        text.copy(&m_text[m_size], fitting);
        m_size += fitting;
        m_isCut = m_isCut || fitting < text.size(); // What comes next might fit, and would not belong there.
        m_text[m_size] = '\0';
    }

    /// From outside. What a terminal might obey or hide stands here as its number.
    void append(std::u16string_view units)
    {
        for (std::size_t i = 0; i < units.size(); ++i) {
            char32_t character = units[i];
            if (QChar::isHighSurrogate(character) && i + 1 < units.size() && QChar::isLowSurrogate(units[i + 1]))
                character = QChar::surrogateToUcs4(units[i], units[i + 1]);
            i += character > 0xffff ? 1 : 0;
            const bool endsLine = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
            if (QChar::isPrint(character) && !endsLine) {
                appendCharacter(character);
            } else {
                append("<U+");
                append(static_cast<unsigned int>(character), 16);
                append(">");
            }
        }
    }

    void append(std::unsigned_integral auto number, int base = 10)
    {
        std::array<char, 24> digits;
        append(std::string_view(digits.data(), std::to_chars(digits.begin(), digits.end(), number, base).ptr));
    }

private:
    void appendCharacter(char32_t character)
    {
        const std::size_t more = character < 0x80 ? 0U : character < 0x800 ? 1U : character < 0x10000 ? 2U : 3U;
        const unsigned int mark = more == 0 ? 0U : 0xffU & ~(0xffU >> (more + 1));
        std::array<char, 4> bytes{};
        for (std::size_t i = more; i > 0; --i) {
            bytes.at(i) = static_cast<char>(0x80U | (character & 0x3fU));
            character >>= 6U;
        }
        bytes.front() = static_cast<char>(mark | character);
        append(std::string_view(bytes.data(), more + 1));
    }

    std::array<char, capacity> m_text{};
    std::size_t m_size = 0;
    bool m_isCut = false;
};

} // namespace tarnelLib::diagnostics
