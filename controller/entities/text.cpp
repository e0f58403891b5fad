#include "controller/entities/text.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace tarnelLib::controller {

Text::Text(std::u16string_view units)
    : m_units(static_cast<char16_t *>(std::malloc((units.size() + 1) * sizeof(char16_t)))), m_length(units.size())
{
    if (m_units == nullptr)
        throw std::bad_alloc();
    if (!units.empty())
        std::memcpy(m_units, units.data(), units.size() * sizeof(char16_t));
    m_units[units.size()] = u'\0';
}

Text::~Text()
{
    std::free(m_units);
}

} // namespace tarnelLib::controller
