#include "entities/text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tarnelLib::controller {

Text::Text(std::size_t length)
    : m_units(static_cast<char16_t *>(std::malloc((length + 1) * sizeof(char16_t)))), m_length(length)
{
    if (m_units == nullptr)
        throw std::bad_alloc();
    m_units[length] = u'\0';
}

Text::Text(std::u16string_view units) : Text(units.size())
{
    if (!units.empty())
        std::memcpy(m_units, units.data(), units.size() * sizeof(char16_t));
}

std::optional<Text> Text::fromUtf8(std::string_view bytes)
{
    const auto isContinuation = [](unsigned int byte) { return (byte & 0xc0U) == 0x80; };
    const auto *byte = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto *const end = byte + bytes.size();
    Text text(bytes.size() - static_cast<std::size_t>(std::count_if(byte, end, isContinuation)));
    // Whatever is written belongs to a byte that has been counted.
    for (char16_t *unit = text.m_units; byte != end; ++unit) {
        const unsigned int lead = *byte++;
        unsigned int character = lead;
        if (lead >= 0xe0 && lead < 0xf0 && end - byte >= 2 && isContinuation(byte[0]) && isContinuation(byte[1])) {
            character = (lead & 0xfU) << 12U | (byte[0] & 0x3fU) << 6U | (byte[1] & 0x3fU);
            byte += 2;
            if (character < 0x800 || (character & 0xf800U) == 0xd800 || character >= 0xfffe)
                return std::nullopt;
        } else if (lead >= 0xc2 && lead < 0xe0 && end != byte && isContinuation(*byte)) {
            character = (lead & 0x1fU) << 6U | (*byte++ & 0x3fU);
        } else if (lead >= 0x80) {
            return std::nullopt;
        }
        *unit = static_cast<char16_t>(character);
    }
    return text;
}

Text::~Text()
{
    std::free(m_units);
}

} // namespace tarnelLib::controller
