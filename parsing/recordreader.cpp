#include "parsing/recordreader.h"

#include <cstdint>
#include <limits>

namespace tarnelLib::controller {

namespace {

constexpr double beyondSigned = 9223372036854775808.0; // 2^63
constexpr double beyondUnsigned = 2 * beyondSigned;

/// A number cut to a whole one; 0 beyond the signed 64-bit range.
qint64 truncated(double number)
{
    return number >= -beyondSigned && number < beyondSigned ? static_cast<qint64>(number) : 0;
}

/// A whole number within 32 bits; any other reads as 0.
qint32 wholeOrZero(double number)
{
    const qint64 whole = truncated(number);
    const auto small = static_cast<qint32>(whole);
    return static_cast<double>(small) == number ? small : 0;
}

quint64 unsignedOf(double number)
{
    const bool isBeyondSigned = number >= beyondSigned && number < beyondUnsigned;
    return isBeyondSigned ? static_cast<quint64>(number) : static_cast<quint64>(truncated(number));
}

/// Passes the value ahead, and reads it as `convert` makes it of a number; what is no number reads as 0. Whole numbers
/// up to `limit` are meant as they stand there.
template <class Value, class Convert>
Reading readNumber(JsonReader &json, Value &destination, std::uint64_t limit, Convert &&convert)
{
    if (json.type() != JsonReader::Type::Number) {
        json.skip();
        destination = 0;
        return Reading::Wrong;
    }
    const std::optional<std::int64_t> whole = json.readShortWholeNumber();
    if (whole && static_cast<std::uint64_t>(*whole) <= limit) {
        destination = static_cast<Value>(*whole);
        return Reading::Fine;
    }
    const double number = whole ? static_cast<double>(*whole) : json.readOtherNumber();
    destination = static_cast<Value>(convert(number));
    const bool isKept =
        std::is_same_v<Value, bool> ? destination == (number != 0) : static_cast<double>(destination) == number;
    return isKept ? Reading::Fine : Reading::Cut;
}

template <class Value>
constexpr std::uint64_t limitOf = std::numeric_limits<Value>::max();

} // namespace

Reading readValue(JsonReader &json, quint32 &destination)
{
    return readNumber(json, destination, limitOf<quint32>, truncated);
}

Reading readValue(JsonReader &json, qint32 &destination)
{
    return readNumber(json, destination, limitOf<qint32>, wholeOrZero);
}

Reading readValue(JsonReader &json, quint8 &destination)
{
    return readNumber(json, destination, limitOf<quint8>, wholeOrZero);
}

Reading readValue(JsonReader &json, bool &destination)
{
    if (json.type() != JsonReader::Type::Boolean)
        return readNumber(json, destination, limitOf<qint32>, wholeOrZero);
    const bool isTrue = json.rest().starts_with(u't');
    json.skip();
    destination = false;
    return isTrue ? Reading::TrueForFlag : Reading::Fine;
}

Reading readValue(JsonReader &json, quint64 &destination)
{
    return readNumber(json, destination, limitOf<quint64>, unsignedOf);
}

Reading readValue(JsonReader &json, double &destination)
{
    const bool isNumber = json.type() == JsonReader::Type::Number;
    if (!isNumber)
        json.skip();
    destination = isNumber ? json.readNumber() : 0;
    return isNumber ? Reading::Fine : Reading::Wrong;
}

Reading readValue(JsonReader &json, std::optional<Text> &destination)
{
    destination.reset();
    if (json.type() == JsonReader::Type::String)
        destination = json.readText();
    else
        json.skip();
    return destination ? Reading::Fine : Reading::Wrong;
}

} // namespace tarnelLib::controller
