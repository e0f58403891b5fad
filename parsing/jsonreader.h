#pragma once

#include "diagnostics/suspicions.h"
#include "entities/text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnelLib::controller {

/// Reads a JSON text in one pass over its UTF-16 code units, without a tree of what it holds. 100,000 events are read
/// in a tenth of the time that they take through Qt's tree.
///
/// The caller asks for the type of the value ahead, and reads it by that type or skips it. A syntax error ends the
/// reading: from then on nothing is ahead, and `isComplete` says so in the end. What is accepted, and read as what, is
/// what Qt's JSON parser makes of the text in UTF-8: it is lenient about numbers ("1.", ".5") and escapes ("\x" is
/// "x"), stops at 1,024 levels, and knows no unpaired surrogates, which read as "?" unless they are escaped.
class JsonReader
{
public:
    explicit JsonReader(std::u16string_view text);

    enum class Type { Object, Array, String, Number, Boolean, Null, Nothing };

    /// The type of the value ahead; nothing after an error.
    [[nodiscard]] Type type() const
    {
        if (m_position == m_end)
            return Type::Nothing;
        switch (*m_position) {
        case u'{':
            return Type::Object;
        case u'[':
            return Type::Array;
        case u'"':
            return Type::String;
        case u't':
        case u'f':
            return Type::Boolean;
        case u'n':
            return Type::Null;
        default:
            return Type::Number; // Or no value at all, as reading or skipping it will find.
        }
    }

    /// Calls `onMember` with each key of the object ahead; it must read or skip the member's value.
    template <class OnMember>
    void readObject(OnMember &&onMember)
    {
        enter(u'{');
        for (bool hasMember = !leaveIfAhead(u'}'); hasMember; hasMember = hasMore(u'}'))
            onMember(readKey());
    }

    /// Calls `onItem` for each item of the array ahead; it must read or skip the item.
    template <class OnItem>
    void readArray(OnItem &&onItem)
    {
        enter(u'[');
        for (bool hasItem = !leaveIfAhead(u']'); hasItem; hasItem = hasMore(u']'))
            onItem();
    }

    [[nodiscard]] double readNumber();
    /// Nearly all numbers are whole, of a few digits: these need no conversion that rounds. Nothing, and nothing read,
    /// if another number is ahead.
    [[nodiscard]] std::optional<std::int64_t> readShortWholeNumber();
    [[nodiscard]] double readOtherNumber();
    [[nodiscard]] Text readText();

    /// Passes over the value ahead, of whatever type and depth.
    void skip();

    /// Whether the text was one value without an error; to be asked when that value has been read.
    [[nodiscard]] bool isComplete() const { return !m_hasFailed && m_position == m_end; }

    /// Where the text has its first error, and what stands there instead; to be asked if it is not complete.
    [[nodiscard]] std::string error() const;

    /// The text from here on, for who wants to show what was read.
    [[nodiscard]] std::u16string_view rest() const { return {m_position, m_end}; }

    /// What the caller found odd in this text.
    diagnostics::Oddities oddities;

private:
    /// What follows finds the text at its end.
    void fail(const char *expected)
    {
        if (!m_hasFailed) {
            m_expected = expected;
            m_failedAt = m_position;
        }
        m_hasFailed = true;
        m_position = m_end;
    }
    void skipSpace()
    {
        while (m_position != m_end && *m_position <= u' ' &&
               (*m_position == u' ' || *m_position == u'\n' || *m_position == u'\r' || *m_position == u'\t'))
            ++m_position;
    }
    bool passIfAhead(char16_t unit)
    {
        if (m_position == m_end || *m_position != unit)
            return false;
        ++m_position;
        skipSpace();
        return true;
    }
    void enter(char16_t bracket);
    bool leaveIfAhead(char16_t bracket);
    bool hasMore(char16_t bracket);
    void skipLiteral(std::u16string_view literal);
    std::u16string_view readKey();
    std::u16string_view readString();
    std::u16string_view readStringWithEscapes(const char16_t *begin);
    std::optional<char16_t> readEscape();
    std::optional<char16_t> readHexadecimal();

    std::u16string m_swapped; ///< The text, if it came in the other byte order.
    const char16_t *m_begin;
    const char16_t *m_position; ///< Never at white space between calls.
    const char16_t *m_end;
    const char16_t *m_failedAt = nullptr;
    const char *m_expected = nullptr; ///< At the error.
    bool m_hasFailed = false;
    int m_depth = 0;
    std::u16string m_unescaped; ///< The string last read, if it is not in the text as it stands.
};

} // namespace tarnelLib::controller
