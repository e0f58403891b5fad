#include "parsing/recordreader.h"

namespace tarnelLib::controller {

namespace {

constexpr double beyondSigned = 9223372036854775808.0; // 2^63
constexpr double beyondUnsigned = 2 * beyondSigned;

/// Passes a value and reads it if it is a number; nothing otherwise.
std::optional<double> readNumber(JsonReader &json)
{
    if (json.type() == JsonReader::Type::Number)
        return json.readNumber();
    json.skip();
    return std::nullopt;
}

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

} // namespace

bool readValue(JsonReader &json, quint32 &destination)
{
    const std::optional<double> number = readNumber(json);
    destination = static_cast<quint32>(truncated(number.value_or(0)));
    return number.has_value();
}

bool readValue(JsonReader &json, qint32 &destination)
{
    const std::optional<double> number = readNumber(json);
    destination = wholeOrZero(number.value_or(0));
    return number.has_value();
}

bool readValue(JsonReader &json, quint8 &destination)
{
    const std::optional<double> number = readNumber(json);
    destination = static_cast<quint8>(wholeOrZero(number.value_or(0)));
    return number.has_value();
}

bool readValue(JsonReader &json, bool &destination)
{
    const bool isBoolean = json.type() == JsonReader::Type::Boolean;
    const std::optional<double> number = readNumber(json);
    destination = wholeOrZero(number.value_or(0)) != 0;
    return number.has_value() || isBoolean;
}

bool readValue(JsonReader &json, quint64 &destination)
{
    const std::optional<double> number = readNumber(json);
    const double value = number.value_or(0);
    destination = value >= beyondSigned && value < beyondUnsigned ? static_cast<quint64>(value)
                                                                  : static_cast<quint64>(truncated(value));
    return number.has_value();
}

bool readValue(JsonReader &json, double &destination)
{
    const std::optional<double> number = readNumber(json);
    destination = number.value_or(0);
    return number.has_value();
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
