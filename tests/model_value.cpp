#include "model_value.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <numeric>

namespace model {

namespace {

std::string quoted(const std::string &text)
{
    std::string result = "\"";
    for (const char unit : text) {
        if (unit == '"' || unit == '\\')
            result += '\\';
        if (unit == '\n')
            result += "\\n";
        else
            result += unit;
    }
    return result + '"';
}

/// One text per item, between brackets.
template <class Items, class ToText>
std::string joined(const char *brackets, const Items &items, ToText &&toText)
{
    std::string result(1, brackets[0]);
    for (const auto &item : items)
        result.append(result.size() > 1 ? "," : "").append(toText(item));
    result.push_back(brackets[1]);
    return result;
}

/// The integer reading that gives up on what is no whole number within 32 bits.
double signedOf(double number)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return number == std::trunc(number) && number >= Limits::min() && number <= Limits::max() ? number : 0;
}

/// A value of a request as it is stored.
Value parsed(const Field &field, const Value &value, double owner)
{
    switch (field.type) {
    case Type::Text:
        return as<std::string>(value);
    case Type::Signed:
        return signedOf(as<double>(value));
    case Type::Byte:
        return double(static_cast<std::uint8_t>(static_cast<int>(signedOf(as<double>(value)))));
    case Type::Flag: // The integer reading makes 0 of either boolean.
        return std::holds_alternative<bool>(value) ? 0.0 : double(signedOf(as<double>(value)) != 0);
    case Type::Wide:
        return std::trunc(as<double>(value));
    case Type::Real:
        return as<double>(value);
    case Type::Nested:
        if (field.isObjectInRequest())
            return parsed(*field.other, as<Record>(value), field.key == "location" ? &owner : nullptr);
        [[fallthrough]];
    case Type::Unsigned:
        return unsignedOf(as<double>(value));
    default:
        List items;
        for (const Value &item : as<List>(value))
            items.push_back(field.other ? Value(parsed(*field.other, as<Record>(item))) : unsignedOf(as<double>(item)));
        return items;
    }
}

} // namespace

const Value &member(const Record &object, const std::string &key)
{
    if (const auto found = object.find(key); found != object.end())
        return found->second;
    throw Refusal{5};
}

double unsignedOf(double number)
{
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(number));
}

Record parsed(const Kind &kind, const Record &object, const double *givenId)
{
    const std::string &key = object.contains(kind.id) ? kind.id : kind.alternative;
    const double id = givenId ? *givenId : unsignedOf(as<double>(member(object, key)));
    Record result{{kind.id, id}};
    for (const Field &field : kind.fields) {
        if (field.isInRequest() && object.contains(field.key))
            result.emplace(field.key, parsed(field, object.at(field.key), id));
    }
    return result;
}

std::string json(const Value &value)
{
    char number[32];
    switch (value.index()) {
    case 1:
        return std::get<bool>(value) ? "true" : "false";
    case 2:
        std::snprintf(number, sizeof number, "%.17g", std::get<double>(value));
        return number;
    case 3:
        return quoted(std::get<std::string>(value));
    case 4:
        return joined("[]", std::get<List>(value), json);
    case 5:
        return joined("{}", std::get<Record>(value),
                      [](const auto &entry) { return quoted(entry.first) + ":" + json(entry.second); });
    default:
        return "null";
    }
}

std::string textOf(std::vector<std::string> records, bool isOrdered)
{
    if (!isOrdered)
        std::ranges::sort(records);
    return std::accumulate(records.begin(), records.end(), std::string(),
                           [](std::string text, const std::string &record) { return text.append(record + "\n"); });
}

} // namespace model
