/// @file
/// Requests from named fields with checked values, instead of JSON that is written by hand.
#ifndef TARNEL_REQUEST_HPP
#define TARNEL_REQUEST_HPP

#include <tarnel/text.hpp>

#include <charconv>
#include <cmath>
#include <initializer_list>
#include <vector>

namespace tarnel {

using tarnelLib::api::Contract;
using tarnelLib::api::Contractor;
using tarnelLib::api::Device;
using tarnelLib::api::DeviceUser;
using tarnelLib::api::Domain;
using tarnelLib::api::Event;
using tarnelLib::api::Locale;
using tarnelLib::api::Location;
using tarnelLib::api::Organization;
using tarnelLib::api::Person;
using tarnelLib::api::Section;
using tarnelLib::api::Site;
using tarnelLib::api::User;
using tarnelLib::api::Zone;

/// A number or a flag that a field can hold. A flag takes nothing but true and false, a number no flag. One that is out
/// of the field's range throws an `Error`, for the library would cut it to some other.
template <class Value>
class Number
{
public:
    template <class Given, class = std::enable_if_t<std::is_arithmetic_v<Given> &&
                                                    std::is_same_v<Given, bool> == std::is_same_v<Value, bool> &&
                                                    std::is_integral_v<Given> >= std::is_integral_v<Value>>>
    Number(Given given) : m_value(static_cast<Value>(given))
    {
        if constexpr (std::is_floating_point_v<Value>) {
            if (!std::isfinite(m_value))
                throw Error(TARNEL_INVALID_REQUEST, "a number that is none, or infinite");
        } else if (static_cast<Given>(m_value) != given || (given < Given{}) != (m_value < Value{}) ||
                   m_value > most()) {
            throw Error(TARNEL_INVALID_REQUEST, std::to_string(given) + " is out of the field's range");
        }
    }

    [[nodiscard]] Value get() const noexcept { return m_value; }

    /// In decimal; a flag as 1 or 0.
    void appendTo(std::u16string &text) const
    {
        char digits[32];
        std::to_chars_result end{};
        if constexpr (std::is_floating_point_v<Value>)
            end = std::to_chars(std::begin(digits), std::end(digits), m_value);
        else
            end = std::to_chars(std::begin(digits), std::end(digits), +m_value);
        text.append(std::begin(digits), end.ptr);
    }

private:
    /// The numbers of JSON are exact up to 2^53.
    static constexpr Value most()
    {
        if constexpr (sizeof(Value) == sizeof(std::uint64_t))
            return Value{1} << 53;
        else
            return std::numeric_limits<Value>::max();
    }

    Value m_value;
};

/// A field of a kind of record with its value, for `Fields`.
template <class Kind>
struct Assigned {
    std::u16string json;
};

/// Some or all fields of a record that is sent: `Fields<User>{user::id(7), user::name("Ada")}`. The identifier must be
/// among them.
template <class Kind>
class Fields
{
public:
    Fields() = default;
    Fields(std::initializer_list<Assigned<Kind>> fields)
    {
        for (const Assigned<Kind> &field : fields)
            add(field);
    }

    Fields &add(const Assigned<Kind> &field)
    {
        m_json.append(m_json.empty() ? u"" : u",").append(field.json);
        return *this;
    }

    /// An object's members.
    [[nodiscard]] const std::u16string &json() const noexcept { return m_json; }

private:
    std::u16string m_json;
};

namespace detail {

inline void append(std::u16string &json, const Text &text)
{
    json += u'"';
    for (const char16_t unit : text.view()) {
        if (unit < 0x20) {
            constexpr char16_t digits[] = u"0123456789abcdef";
            json.append(u"\\u00").append({digits[unit >> 4], digits[unit & 15]});
            continue;
        }
        if (unit == u'"' || unit == u'\\')
            json += u'\\';
        json += unit;
    }
    json += u'"';
}

template <class Value>
void append(std::u16string &json, const Number<Value> &number)
{
    number.appendTo(json);
}

inline void append(std::u16string &json, unsigned int number)
{
    append(json, Number<unsigned int>(number));
}

template <class Kind>
void append(std::u16string &json, const Fields<Kind> &fields)
{
    json.append(u"{").append(fields.json()).append(u"}");
}

template <class Element>
void append(std::u16string &json, const std::vector<Element> &elements)
{
    json += u'[';
    for (const Element &element : elements) {
        if (json.back() != u'[')
            json += u',';
        append(json, element);
    }
    json += u']';
}

inline void appendKey(std::u16string &json, std::u16string_view key)
{
    json.append(u"\"").append(key).append(u"\":");
}

} // namespace detail

/// A field of a kind of record, by which requests and filters name it; see fields.hpp.
template <class Kind, class Value>
class Field
{
public:
    /// What a value is given as.
    using Given = std::conditional_t<std::is_arithmetic_v<Value>, Number<Value>, Value>;
    /// A field that is a list or an object of its own is no filter.
    static constexpr bool isFilter = std::is_arithmetic_v<Value> || std::is_same_v<Value, Text>;

    constexpr explicit Field(const char16_t *key) : m_key(key) {}

    [[nodiscard]] constexpr std::u16string_view key() const noexcept { return m_key; }

    /// The field with a value.
    [[nodiscard]] Assigned<Kind> operator()(const Given &value) const
    {
        Assigned<Kind> assigned;
        detail::appendKey(assigned.json, m_key);
        detail::append(assigned.json, value);
        return assigned;
    }

private:
    std::u16string_view m_key;
};

/// An "add" request that grows record by record. A record is a `Fields<Kind>`, or the text of its JSON object.
template <class Kind>
class AddRequest
{
public:
    AddRequest() = default;
    AddRequest(const std::vector<Fields<Kind>> &records)
    {
        for (const Fields<Kind> &record : records)
            add(record);
    }

    void add(const Fields<Kind> &record) { detail::append(next(), record); }
    void add(const Text &object) { next().append(object.view()); }

    /// How many records it has.
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    void clear() noexcept
    {
        m_items.clear();
        m_size = 0;
    }

    [[nodiscard]] std::u16string text() const
    {
        std::u16string json = u"{\"D\":{\"items\":[";
        json.append(m_items).append(u"]}}");
        return json;
    }

private:
    std::u16string &next() { return m_size++ == 0 ? m_items : m_items.append(u","); }

    std::u16string m_items;
    std::size_t m_size = 0;
};

/// A request about one record: an "update", or an "add" of one.
template <class Kind>
[[nodiscard]] std::u16string request(const Fields<Kind> &fields)
{
    std::u16string json = u"{\"D\":{";
    json.append(fields.json()).append(u"}}");
    return json;
}

} // namespace tarnel

#endif
