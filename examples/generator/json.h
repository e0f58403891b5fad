#pragma once

#include "generator/records.h"

#include <span>
#include <type_traits>

/// The texts of requests, in UTF-16, as the library takes them.
namespace generator {

/// Appends records and values to a text as JSON.
class JsonWriter
{
public:
    explicit JsonWriter(std::u16string &text) : m_text(text) {}

    void value(std::uint64_t number);
    void value(std::uint32_t number) { value(std::uint64_t{number}); }
    void value(std::uint8_t number) { value(std::uint64_t{number}); }
    void value(std::int32_t number);
    void value(bool flag) { m_text.push_back(flag ? u'1' : u'0'); }
    void value(double number);
    void value(const std::u16string &text);

    template <class Element>
    void value(const std::vector<Element> &elements)
    {
        values(std::span<const Element>(elements));
    }

    template <class Record>
    requires std::is_class_v<Record>
    void value(const Record &record)
    {
        m_text.push_back(u'{');
        members(record);
        m_text.push_back(u'}');
    }

    template <class Element>
    void values(std::span<const Element> elements)
    {
        m_text.push_back(u'[');
        for (const Element &element : elements) {
            separate(u'[');
            value(element);
        }
        m_text.push_back(u']');
    }

    /// The fields of a record that are there, without the braces.
    template <class Record>
    void members(const Record &record)
    {
        record.visit([this](std::u16string_view key, const auto &member) { this->member(key, member); });
    }

    template <class Value>
    void member(std::u16string_view key, const Value &member)
    {
        separate(u'{');
        m_text.append(u"\"").append(key).append(u"\":");
        value(member);
    }

    template <class Value>
    void member(std::u16string_view key, const std::optional<Value> &optional)
    {
        if (optional)
            member(key, *optional);
    }

    template <class Element>
    void member(std::u16string_view key, const std::vector<Element> &elements)
    {
        if (elements.empty())
            return;
        separate(u'{');
        m_text.append(u"\"").append(key).append(u"\":");
        value(elements);
    }

private:
    /// Puts a comma, unless nothing has been written since the opening bracket.
    void separate(char16_t opening)
    {
        if (m_text.back() != opening)
            m_text.push_back(u',');
    }

    std::u16string &m_text;
};

/// The "add" request of these records: `{"D":{"items":[...]}}`.
template <class Record>
std::u16string addRequest(std::span<const Record> records)
{
    std::u16string text = u"{\"D\":{\"items\":";
    JsonWriter(text).values(records);
    return text.append(u"}}");
}

template <class Record>
std::u16string addRequest(const std::vector<Record> &records)
{
    return addRequest(std::span<const Record>(records));
}

/// The request that carries one record: to update it, or to add a single event or device. Only the fields that are
/// there are written.
template <class Record>
std::u16string recordRequest(const Record &record)
{
    std::u16string text = u"{\"D\":";
    JsonWriter(text).value(record);
    return text.append(u"}");
}

/// The update of a section, which names its device.
std::u16string sectionRequest(std::uint32_t device, const Section &section);

/// The update of a zone, which names its device and section. A section other than the zone's own moves it there.
std::u16string zoneRequest(std::uint32_t device, std::uint32_t section, const Zone &zone);

/// A request that names one record under a key.
std::u16string idRequest(std::u16string_view key, std::uint32_t id);

/// The "delete" request of a kind; for events the request that takes the affect flag off.
template <class Record>
std::u16string deleteRequest(std::uint32_t id)
{
    return idRequest(Record::deleteKey, id);
}

std::u16string deleteSectionRequest(std::uint32_t device, std::uint32_t section);
std::u16string deleteZoneRequest(std::uint32_t device, std::uint32_t section, std::uint32_t zone);

} // namespace generator
