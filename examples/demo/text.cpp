#include "demo/text.h"

#include <clocale>
#include <cwchar>

namespace demo {

namespace {

constexpr char32_t replacement = 0xfffd;

void appendUtf8(std::string &text, char32_t character)
{
    const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
        return;
    }
    if (character < 0x800) {
        append(0xc0 | character >> 6U);
    } else {
        if (character < 0x10000) {
            append(0xe0 | character >> 12U);
        } else {
            append(0xf0 | character >> 18U);
            append(0x80 | (character >> 12U & 0x3fU));
        }
        append(0x80 | (character >> 6U & 0x3fU));
    }
    append(0x80 | (character & 0x3fU));
}

/// Takes the first character off well-formed UTF-8.
char32_t takeCharacter(std::string_view &text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t size = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    char32_t character = size == 1 ? first : first & (0xffU >> (size + 1));
    for (std::size_t i = 1; i < size && i < text.size(); ++i)
        character = character << 6U | (static_cast<unsigned char>(text[i]) & 0x3fU);
    text.remove_prefix(std::min(size, text.size()));
    return character;
}

/// Knows the widths of all characters, whatever the user's own locale is.
locale_t unicodeLocale()
{
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return unicode;
}

} // namespace

std::string utf8(std::u16string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        const bool isFirstOfPair = character >= 0xd800 && character < 0xdc00 && i + 1 < text.size() &&
                                   text[i + 1] >= 0xdc00 && text[i + 1] < 0xe000;
        if (isFirstOfPair)
            character = 0x10000 + ((character - 0xd800) << 10U) + (text[++i] - 0xdc00U);
        else if (character >= 0xd800 && character < 0xe000)
            character = replacement;
        appendUtf8(result, character);
    }
    return result;
}

std::string utf8(const unsigned short *text)
{
    return text == nullptr ? "–" : utf8(std::u16string_view(reinterpret_cast<const char16_t *>(text)));
}

std::u16string utf16(std::string_view text)
{
    std::u16string result;
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (character < 0x10000) {
            result.push_back(static_cast<char16_t>(character));
        } else {
            result.push_back(static_cast<char16_t>(0xd800 + ((character - 0x10000) >> 10U)));
            result.push_back(static_cast<char16_t>(0xdc00 + (character & 0x3ffU)));
        }
    }
    return result;
}

std::size_t displayWidth(std::string_view text)
{
    const locale_t former = unicodeLocale() == nullptr ? nullptr : ::uselocale(unicodeLocale());
    std::size_t columns = 0;
    while (!text.empty()) {
        const int width = ::wcwidth(static_cast<wchar_t>(takeCharacter(text)));
        columns += width < 0 ? 1 : static_cast<std::size_t>(width);
    }
    if (former != nullptr)
        ::uselocale(former);
    return columns;
}

} // namespace demo
