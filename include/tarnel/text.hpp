/// @file
/// Texts on their way in and out, in UTF-16 as the library has them, in UTF-8, and as QString where Qt's headers are.
#ifndef TARNEL_TEXT_HPP
#define TARNEL_TEXT_HPP

#include <tarnel/result.hpp>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#if __has_include(<QString>)
#include <QString>
#define TARNEL_QSTRING
#endif

namespace tarnel {

namespace detail {

constexpr char32_t replacement = 0xFFFD;

/// The code point at `position`, which moves behind it; U+FFFD for a surrogate without its partner.
inline char32_t next(std::u16string_view text, std::size_t &position) noexcept
{
    const char32_t unit = text[position++];
    if (unit < 0xD800 || unit > 0xDFFF)
        return unit;
    const bool isPair = unit < 0xDC00 && position < text.size() && (text[position] & 0xFC00) == 0xDC00;
    return isPair ? 0x10000 + ((unit & 0x3FF) << 10) + (text[position++] & 0x3FFU) : replacement;
}

/// The same in UTF-8; U+FFFD for each byte that is no part of a code point.
inline char32_t next(std::string_view text, std::size_t &position) noexcept
{
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(position++);
    if (first < 0x80)
        return first;
    const unsigned int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4 || text.size() - position < more)
        return replacement;
    char32_t point = first & (0x3FU >> more);
    for (unsigned int i = 0; i < more; ++i) {
        if ((byte(position + i) & 0xC0) != 0x80)
            return replacement;
        point = point << 6 | (byte(position + i) & 0x3FU);
    }
    constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
    if (point < smallest[more - 1] || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000))
        return replacement;
    position += more;
    return point;
}

} // namespace detail

/// A text as UTF-16.
[[nodiscard]] inline std::u16string utf16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t point = detail::next(text, i);
        if (point >= 0x10000)
            units += static_cast<char16_t>(0xD7C0 + (point >> 10));
        units += static_cast<char16_t>(point < 0x10000 ? point : 0xDC00 | (point & 0x3FF));
    }
    return units;
}

/// A text as UTF-8.
[[nodiscard]] inline std::string utf8(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t point = detail::next(text, i);
        const int more = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
        constexpr unsigned int marks[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(marks[more] | point >> (6 * more));
        for (int rest = more - 1; rest >= 0; --rest)
            bytes += static_cast<char>(0x80 | (point >> (6 * rest) & 0x3F));
    }
    return bytes;
}

/// A text member of a structure, which owns it; empty if the record has none. For a difference between the two compare
/// the member with null.
[[nodiscard]] inline std::u16string_view text(const unsigned short *member) noexcept
{
    return member == nullptr ? std::u16string_view() : reinterpret_cast<const char16_t *>(member);
}

/// The same as UTF-8.
[[nodiscard]] inline std::string utf8(const unsigned short *member)
{
    return utf8(text(member));
}

/// A number or flag of a structure; none if the record has none. As in `value(user->isActive).value_or(false)`.
template <class Number>
[[nodiscard]] std::optional<Number> value(const Number *member) noexcept
{
    static_assert(std::is_arithmetic_v<Number>, "nested structures are read through their pointers");
    static_assert(!std::is_same_v<Number, unsigned short>, "texts are read with text() and utf8()");
    return member == nullptr ? std::nullopt : std::optional(*member);
}

/// The parts of a record, or any other block with its count: a range that does not own them.
template <class Part>
class List
{
public:
    List(const Part *parts, unsigned int count) noexcept : m_parts(parts), m_count(count) {}

    [[nodiscard]] const Part *begin() const noexcept { return m_parts; }
    [[nodiscard]] const Part *end() const noexcept { return m_parts + m_count; }
    [[nodiscard]] unsigned int size() const noexcept { return m_count; }
    [[nodiscard]] bool empty() const noexcept { return m_count == 0; }
    [[nodiscard]] const Part &operator[](unsigned int index) const noexcept { return m_parts[index]; }

private:
    const Part *m_parts;
    unsigned int m_count;
};

/// A list of a structure with the member after it: `list(device->sections, device->sectionsCount)`.
template <class Part>
[[nodiscard]] List<Part> list(const Part *parts, unsigned int count) noexcept
{
    return {parts, count};
}

/// A text that goes in: UTF-16 is passed on as it is and must outlive this object, UTF-8 is converted. For parameters.
class Text
{
public:
    Text(std::u16string_view text) : m_view(text) {}
    Text(const std::u16string &text) : m_view(text) {}
    Text(const char16_t *text) : m_view(text) {}
    Text(std::string_view text) : m_owned(utf16(text)) {}
    Text(const std::string &text) : Text(std::string_view(text)) {}
    Text(const char *text) : Text(std::string_view(text)) {}
    /// Takes over what was made for this purpose.
    Text(std::u16string &&text) noexcept : m_owned(std::move(text)) {}
#ifdef TARNEL_QSTRING
    Text(const QString &text)
        : m_view(reinterpret_cast<const char16_t *>(text.utf16()), static_cast<std::size_t>(text.size()))
    {
    }
#endif

    [[nodiscard]] std::u16string_view view() const noexcept
    {
        return m_owned ? *m_owned : m_view;
    }
    [[nodiscard]] const unsigned short *units() const noexcept
    {
        return reinterpret_cast<const unsigned short *>(view().data());
    }
    /// Throws an `Error` if there are more than the library's functions can be told of.
    [[nodiscard]] unsigned int length() const
    {
        if (view().size() > std::numeric_limits<unsigned int>::max())
            throw Error(TARNEL_INVALID_ARGUMENT, "a text of more than 2^32 code units");
        return static_cast<unsigned int>(view().size());
    }

private:
    std::optional<std::u16string> m_owned;
    std::u16string_view m_view;
};

#ifdef TARNEL_QSTRING
#undef TARNEL_QSTRING
/// A text of the library as Qt's; that of a member which is null is null.
[[nodiscard]] inline QString qstring(std::u16string_view text)
{
    return QString(reinterpret_cast<const QChar *>(text.data()), static_cast<int>(text.size()));
}
[[nodiscard]] inline QString qstring(const unsigned short *member)
{
    return qstring(text(member));
}
#endif

} // namespace tarnel

#endif
