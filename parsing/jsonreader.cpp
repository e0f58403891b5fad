#include "parsing/jsonreader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <vector>

namespace tarnelLib::controller {

namespace {

constexpr int depthLimit = 1024;
constexpr char16_t byteOrderMark = 0xfeff;
constexpr char16_t swappedByteOrderMark = 0xfffe;

constexpr const char *unendedString = "the string has no end";

constexpr bool isHighSurrogate(char16_t unit)
{
    return (unit & 0xfc00) == 0xd800;
}

constexpr bool isLowSurrogate(char16_t unit)
{
    return (unit & 0xfc00) == 0xdc00;
}

constexpr bool isSurrogate(char16_t unit)
{
    return (unit & 0xf800) == 0xd800;
}

constexpr bool isDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

} // namespace

JsonReader::JsonReader(std::u16string_view text)
{
    if (!text.empty() && text.front() == swappedByteOrderMark) {
        m_swapped = text;
        std::ranges::transform(m_swapped, m_swapped.begin(),
                               [](char16_t unit) { return static_cast<char16_t>(unit >> 8 | unit << 8); });
        text = m_swapped;
    }
    m_begin = text.data();
    // One mark belongs to UTF-16, and one may be left of UTF-8.
    for (int marks = 0; marks < 2 && !text.empty() && text.front() == byteOrderMark; ++marks)
        text.remove_prefix(1);
    m_position = text.data();
    m_end = text.data() + text.size();
    skipSpace();
}

double JsonReader::readNumber()
{
    const std::optional<std::int64_t> number = readShortWholeNumber();
    return number ? static_cast<double>(*number) : readOtherNumber();
}

double JsonReader::readOtherNumber()
{
    const char16_t *const begin = m_position;
    const auto passDigits = [this] {
        while (m_position != m_end && isDigit(*m_position))
            ++m_position;
    };
    const auto pass = [this](char16_t unit, char16_t other) {
        const bool isAhead = m_position != m_end && (*m_position == unit || *m_position == other);
        m_position += isAhead ? 1 : 0;
        return isAhead;
    };
    pass(u'-', u'-');
    if (!pass(u'0', u'0'))
        passDigits();
    if (pass(u'.', u'.'))
        passDigits();
    if (pass(u'e', u'E')) {
        pass(u'-', u'+');
        passDigits();
    }

    // All units are ASCII. Nearly all numbers are short.
    const auto length = static_cast<std::size_t>(m_position - begin);
    std::array<char, 32> shortDigits;
    std::string longDigits;
    char *digits = shortDigits.data();
    if (length > shortDigits.size()) {
        longDigits.resize(length);
        digits = longDigits.data();
    }
    std::transform(begin, m_position, digits, [](char16_t unit) { return static_cast<char>(unit); });
    double number = 0;
    const auto [end, error] = std::from_chars(digits, digits + length, number);
    if (error != std::errc() || end != digits + length) {
        m_position = begin;
        fail(length == 0 ? "a value is expected" : "this is no number that can be read");
    }
    skipSpace();
    return number + 0.0; // There is no negative zero.
}

std::optional<std::int64_t> JsonReader::readShortWholeNumber()
{
    constexpr std::ptrdiff_t digitLimit = 15; // A double holds all of them.
    const char16_t *const limit = m_position + std::min(digitLimit, m_end - m_position);
    const char16_t *next = m_position;
    std::int64_t number = 0;
    for (; next != limit && isDigit(*next); ++next)
        number = number * 10 + (*next - u'0');
    const bool hasLeadingZero = next != m_position && *m_position == u'0' && next != m_position + 1;
    const bool goesOn = next == m_end || isDigit(*next) || *next == u'.' || *next == u'e' || *next == u'E';
    if (next == m_position || hasLeadingZero || goesOn)
        return std::nullopt;
    m_position = next;
    skipSpace();
    return number;
}

Text JsonReader::readText()
{
    const char16_t *const begin = m_position;
    std::u16string_view string = readString();
    // The mark goes here as well, but only from a string that has no escapes.
    if (string.starts_with(byteOrderMark) && std::find(begin, m_position, u'\\') == m_position)
        string.remove_prefix(1);
    Text text(string);
    skipSpace();
    return text;
}

void JsonReader::skip()
{
    std::array<char16_t, depthLimit> brackets; // Of the containers that are open, each by the one that closes it.
    std::size_t open = 0;
    do {
        char16_t bracket = 0;
        switch (type()) {
        case Type::Object:
            bracket = u'}';
            break;
        case Type::Array:
            bracket = u']';
            break;
        case Type::String:
            readString();
            skipSpace();
            break;
        case Type::Number:
            static_cast<void>(readNumber());
            break;
        case Type::Boolean:
            skipLiteral(*m_position == u't' ? u"true" : u"false");
            break;
        case Type::Null:
            skipLiteral(u"null");
            break;
        case Type::Nothing:
            fail("a value is expected");
            break;
        }
        if (bracket != 0) {
            enter(*m_position);
            if (!m_hasFailed && !leaveIfAhead(bracket))
                brackets.at(open++) = bracket;
            else
                bracket = 0;
        }
        // What follows is the first value of a container, or what comes after one.
        if (bracket == 0) {
            while (open > 0 && !hasMore(brackets.at(open - 1)))
                --open;
        }
        if (open > 0 && brackets.at(open - 1) == u'}')
            readKey();
    } while (open > 0);
}

std::string JsonReader::error() const
{
    const char16_t *const place = m_hasFailed ? m_failedAt : m_position;
    std::string text = "line " + std::to_string(1 + std::count(m_begin, place, u'\n'));
    text += ", offset " + std::to_string(place - m_begin) + ": ";
    if (m_hasFailed && place == m_end && m_expected != unendedString)
        text += "the text ends here, and ";
    return text + (m_hasFailed ? m_expected : "nothing more is expected");
}

void JsonReader::enter(char16_t bracket)
{
    if (++m_depth > depthLimit)
        fail("there are more than 1024 levels");
    else
        static_cast<void>(passIfAhead(bracket)); // It is, as callers have seen.
}

bool JsonReader::leaveIfAhead(char16_t bracket)
{
    if (!passIfAhead(bracket))
        return false;
    --m_depth;
    return true;
}

/// Whether another member or item follows in a container; otherwise leaves it, or fails.
bool JsonReader::hasMore(char16_t bracket)
{
    if (passIfAhead(u','))
        return true;
    if (!leaveIfAhead(bracket))
        fail(bracket == u'}' ? R"("," or "}" is expected)" : R"("," or "]" is expected)");
    return false;
}

void JsonReader::skipLiteral(std::u16string_view literal)
{
    if (!std::u16string_view(m_position, m_end).starts_with(literal)) {
        fail("a value is expected");
        return;
    }
    m_position += literal.size();
    skipSpace();
}

std::u16string_view JsonReader::readKey()
{
    const std::u16string_view key = readString();
    skipSpace();
    if (!passIfAhead(u':'))
        fail("\":\" is expected");
    return key;
}

/// The string ahead; it is there until the next one is read.
std::u16string_view JsonReader::readString()
{
    if (m_position == m_end || *m_position != u'"') {
        fail("a key in quotation marks is expected");
        return {};
    }
    const char16_t *const begin = ++m_position;
    while (m_position != m_end && *m_position != u'"') {
        if (*m_position == u'\\' || isSurrogate(*m_position))
            return readStringWithEscapes(begin);
        ++m_position;
    }
    if (m_position == m_end) {
        fail(unendedString);
        return {};
    }
    return {begin, m_position++};
}

/// A string of which not every code unit stands for itself.
std::u16string_view JsonReader::readStringWithEscapes(const char16_t *begin)
{
    m_unescaped.assign(begin, m_position);
    while (m_position != m_end && *m_position != u'"') {
        const char16_t unit = *m_position++;
        if (unit == u'\\') {
            const std::optional<char16_t> escaped = readEscape();
            if (!escaped) {
                fail("this is no escape that can be read");
                return {};
            }
            m_unescaped.push_back(*escaped);
        } else if (isHighSurrogate(unit) && m_position != m_end && isLowSurrogate(*m_position)) {
            m_unescaped.push_back(unit);
            m_unescaped.push_back(*m_position++);
        } else {
            m_unescaped.push_back(isSurrogate(unit) ? u'?' : unit);
        }
    }
    if (m_position == m_end) {
        fail(unendedString);
        return {};
    }
    ++m_position;
    return m_unescaped;
}

/// What stands behind a backslash. Beyond ASCII that is no character by itself, and nothing in UTF-8 but an error.
std::optional<char16_t> JsonReader::readEscape()
{
    if (m_position == m_end)
        return std::nullopt;
    const char16_t unit = *m_position++;
    switch (unit) {
    case u'b':
        return u'\b';
    case u'f':
        return u'\f';
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    case u'u':
        return readHexadecimal();
    default:
        break;
    }
    if (unit < 0x80)
        return unit;
    const bool isPair = isHighSurrogate(unit) && m_position != m_end && isLowSurrogate(*m_position);
    return isSurrogate(unit) && !isPair ? std::optional(u'?') : std::nullopt;
}

std::optional<char16_t> JsonReader::readHexadecimal()
{
    if (m_end - m_position < 4)
        return std::nullopt;
    unsigned int value = 0;
    for (int i = 0; i < 4; ++i) {
        const char16_t unit = *m_position++;
        if (isDigit(unit))
            value = value * 16 + (unit - u'0');
        else if ((unit | 0x20) >= u'a' && (unit | 0x20) <= u'f')
            value = value * 16 + ((unit | 0x20) - u'a' + 10);
        else
            return std::nullopt;
    }
    return static_cast<char16_t>(value);
}

} // namespace tarnelLib::controller
