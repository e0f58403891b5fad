#include "generator/json.h"

#include <array>
#include <charconv>

namespace generator {

namespace {

template <class Value>
void appendNumber(std::u16string &text, Value number)
{
    std::array<char, 32> digits{};
    const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), result.ptr);
}

std::u16string deleteOf(std::initializer_list<std::pair<std::u16string_view, std::uint32_t>> identifiers)
{
    std::u16string text = u"{\"D\":{";
    JsonWriter writer(text);
    for (const auto &[key, id] : identifiers)
        writer.member(key, id);
    return text.append(u"}}");
}

} // namespace

void JsonWriter::value(std::uint64_t number)
{
    appendNumber(m_text, number);
}

void JsonWriter::value(std::int32_t number)
{
    appendNumber(m_text, number);
}

void JsonWriter::value(double number)
{
    appendNumber(m_text, number); // As few digits as read back to the very same number.
}

void JsonWriter::value(const std::u16string &text)
{
    constexpr std::u16string_view hexadecimal = u"0123456789abcdef";
    m_text.push_back(u'"');
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\') {
            m_text.push_back(u'\\');
            m_text.push_back(unit);
        } else if (unit < 0x20) {
            m_text.append(u"\\u00").append({hexadecimal[unit >> 4U], hexadecimal[unit & 15U]});
        } else {
            m_text.push_back(unit);
        }
    }
    m_text.push_back(u'"');
}

std::u16string sectionRequest(std::uint32_t device, const Section &section)
{
    std::u16string text = u"{\"D\":{";
    JsonWriter writer(text);
    writer.member(u"device", device);
    writer.members(section);
    return text.append(u"}}");
}

std::u16string zoneRequest(std::uint32_t device, std::uint32_t section, const Zone &zone)
{
    std::u16string text = u"{\"D\":{";
    JsonWriter writer(text);
    writer.member(u"device", device);
    writer.member(u"section", section);
    writer.members(zone);
    return text.append(u"}}");
}

std::u16string idRequest(std::u16string_view key, std::uint32_t id)
{
    return deleteOf({{key, id}});
}

std::u16string deleteSectionRequest(std::uint32_t device, std::uint32_t section)
{
    return deleteOf({{u"device", device}, {u"section", section}});
}

std::u16string deleteZoneRequest(std::uint32_t device, std::uint32_t section, std::uint32_t zone)
{
    return deleteOf({{u"device", device}, {u"section", section}, {u"zone", zone}});
}

} // namespace generator
