#include "bench/baseline/request.h"

#include <algorithm>
#include <array>

namespace bench {

namespace {

bool isHigh(char16_t unit)
{
    return (unit & 0xfc00U) == 0xd800U;
}

bool isLow(char16_t unit)
{
    return (unit & 0xfc00U) == 0xdc00U;
}

/// An upper bound: a pair of surrogates takes less. The compiler makes vector instructions of it.
std::size_t sizeInUtf8(std::u16string_view text)
{
    std::size_t size = 0;
    constexpr std::size_t chunk = 4096;
    for (std::size_t start = 0; start < text.size(); start += chunk) {
        unsigned int part = 0;
        for (const char16_t unit : text.substr(start, chunk))
            part += 1U + (unit >= 0x80 ? 1U : 0U) + (unit >= 0x800 ? 1U : 0U);
        size += part;
    }
    return size;
}

constexpr std::size_t blockSize = 16;

bool isAscii(const char16_t *block)
{
    unsigned int all = 0;
    for (std::size_t i = 0; i < blockSize; ++i)
        all |= block[i];
    return all < 0x80;
}

char *append(char *target, unsigned int codePoint)
{
    const auto put = [&](unsigned int byte) { *target++ = static_cast<char>(byte); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xc0U | codePoint >> 6U);
        put(0x80U | (codePoint & 0x3fU));
    } else if (codePoint < 0x10000) {
        put(0xe0U | codePoint >> 12U);
        put(0x80U | (codePoint >> 6U & 0x3fU));
        put(0x80U | (codePoint & 0x3fU));
    } else {
        put(0xf0U | codePoint >> 18U);
        put(0x80U | (codePoint >> 12U & 0x3fU));
        put(0x80U | (codePoint >> 6U & 0x3fU));
        put(0x80U | (codePoint & 0x3fU));
    }
    return target;
}

/// Returns the end of what has been written. Blocks without other characters than ASCII, as keys and numbers are, go
/// through in one piece.
char *toUtf8(std::u16string_view text, char *target)
{
    const char16_t *unit = text.data();
    const char16_t *const end = unit + text.size();
    while (unit != end) {
        if (static_cast<std::size_t>(end - unit) >= blockSize && isAscii(unit)) {
            for (std::size_t i = 0; i < blockSize; ++i)
                target[i] = static_cast<char>(unit[i]);
            unit += blockSize;
            target += blockSize;
            continue;
        }
        const char16_t *const blockEnd = unit + std::min<std::ptrdiff_t>(blockSize, end - unit);
        while (unit < blockEnd) {
            unsigned int codePoint = *unit++;
            if (isHigh(static_cast<char16_t>(codePoint)) && unit != end && isLow(*unit))
                codePoint = 0x10000U + ((codePoint & 0x3ffU) << 10U) + (*unit++ & 0x3ffU);
            else if ((codePoint & 0xf800U) == 0xd800U)
                codePoint = '?';
            target = append(target, codePoint);
        }
    }
    return target;
}

} // namespace

void RequestReader::parse(std::u16string_view request)
{
    const std::size_t needed = sizeInUtf8(request) + simdjson::SIMDJSON_PADDING;
    if (needed > m_capacity) {
        m_buffer.reset(new char[needed]);
        m_capacity = needed;
    }
    const char *const end = toUtf8(request, m_buffer.get());
    const auto size = static_cast<std::size_t>(end - m_buffer.get());
    m_document = m_parser.iterate(m_buffer.get(), size, m_capacity);
}

simdjson::ondemand::array RequestReader::items(std::u16string_view request)
{
    parse(request);
    return m_document["D"]["items"];
}

simdjson::ondemand::object RequestReader::record(std::u16string_view request)
{
    parse(request);
    return m_document["D"];
}

} // namespace bench
