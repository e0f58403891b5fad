#include "parsing/recordreader.h"

#include <functional>

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

/// Passes the value ahead, and reads it as `convert` makes it of a number; what is no number reads as 0.
template <class Value, class Convert>
bool readNumber(JsonReader &json, Value &destination, Convert &&convert)
{
    const bool isNumber = json.type() == JsonReader::Type::Number;
    if (!isNumber)
        json.skip();
    destination = static_cast<Value>(isNumber ? convert(json.readNumber()) : 0);
    return isNumber;
}

} // namespace

bool readValue(JsonReader &json, quint32 &destination)
{
    return readNumber(json, destination, truncated);
}

bool readValue(JsonReader &json, qint32 &destination)
{
    return readNumber(json, destination, wholeOrZero);
}

bool readValue(JsonReader &json, quint8 &destination)
{
    return readNumber(json, destination, wholeOrZero);
}

bool readValue(JsonReader &json, bool &destination)
{
    const bool isBoolean = json.type() == JsonReader::Type::Boolean;
    return readNumber(json, destination, wholeOrZero) || isBoolean;
}

bool readValue(JsonReader &json, quint64 &destination)
{
    return readNumber(json, destination, unsignedOf);
}

bool readValue(JsonReader &json, double &destination)
{
    return readNumber(json, destination, std::identity());
}

bool readValue(JsonReader &json, std::optional<Text> &destination)
{
    destination.reset();
    if (json.type() == JsonReader::Type::String)
        destination = json.readText();
    else
        json.skip();
    return destination.has_value();
}

} // namespace tarnelLib::controller
