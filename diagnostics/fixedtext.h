#pragma once

#include <QChar>

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <string_view>

namespace tarnelLib::diagnostics {

/// A UTF-8 text, zero-terminated, in a block of fixed size: it can be written where memory is short. What does not fit
/// is cut off, and a control character, which a terminal might obey, becomes a question mark.
template <std::size_t capacity>
class FixedText
{
public:
    [[nodiscard]] bool isEmpty() const { return m_size == 0; }
    [[nodiscard]] std::string_view view() const { return {m_text.data(), m_size}; }
    [[nodiscard]] const char *terminated() const { return m_text.data(); }

    void append(std::string_view text)
    {
        std::size_t fitting = std::min(text.size(), capacity - 1 - m_size);
        // Not in the middle of a character.
        while (fitting > 0 && fitting < text.size() && (static_cast<unsigned char>(text[fitting]) & 0xc0) == 0x80)
            --fitting;
        for (const char byte : text.substr(0, fitting)) {
            const auto value = static_cast<unsigned char>(byte);
            if (value >= 0x80 && value < 0xa0 && m_size > 0 && m_text[m_size - 1] == '\xc2')
                m_text[m_size - 1] = '?';
            else
                m_text[m_size++] = value < 0x20 || value == 0x7f ? '?' : byte;
        }
        m_text[m_size] = '\0';
    }

    /// Of UTF-16. What a terminal might obey or hide stands here as its number.
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
        const auto last = [&](int shift) { return static_cast<char>(0x80 | (character >> shift & 0x3f)); };
        const auto first = [&](int mark, int shift) { return static_cast<char>(mark | character >> shift); };
        if (character < 0x80)
            append(std::array{first(0, 0)});
        else if (character < 0x800)
            append(std::array{first(0xc0, 6), last(0)});
        else if (character < 0x10000)
            append(std::array{first(0xe0, 12), last(6), last(0)});
        else
            append(std::array{first(0xf0, 18), last(12), last(6), last(0)});
    }
    template <std::size_t count>
    void append(const std::array<char, count> &bytes)
    {
        append(std::string_view(bytes.data(), count));
    }

    std::array<char, capacity> m_text{};
    std::size_t m_size = 0;
};

} // namespace tarnelLib::diagnostics
