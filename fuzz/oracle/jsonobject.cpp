#include "oracle/jsonobject.h"

#include <QJsonDocument>

namespace oracle {

std::optional<QJsonObject> deserializeJsonObject(std::u16string_view text)
{
    const QString units = QString::fromUtf16(text.data(), static_cast<int>(text.size()));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(units.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

QJsonValue valueOf(const QJsonObject &object, std::string_view key)
{
    return object.value(QLatin1String(key.data(), static_cast<int>(key.size())));
}

qint64 truncated(double number)
{
    constexpr double beyond = 9223372036854775808.0; // 2^63
    return number >= -beyond && number < beyond ? static_cast<qint64>(number) : 0;
}

bool readValue(const QJsonValue &value, quint32 &destination)
{
    destination = static_cast<quint32>(truncated(value.toDouble()));
    return value.isDouble();
}

bool readValue(const QJsonValue &value, qint32 &destination)
{
    destination = value.toInt(0);
    return value.isDouble();
}

bool readValue(const QJsonValue &value, quint8 &destination)
{
    destination = static_cast<quint8>(value.toInt(0));
    return value.isDouble();
}

bool readValue(const QJsonValue &value, bool &destination)
{
    destination = value.toInt(0) != 0;
    return value.isDouble() || value.isBool();
}

bool readValue(const QJsonValue &value, quint64 &destination)
{
    constexpr double beyondSigned = 9223372036854775808.0; // 2^63
    constexpr double beyond = 2 * beyondSigned;
    const double number = value.toDouble();
    destination = number >= beyondSigned && number < beyond ? static_cast<quint64>(number)
                                                            : static_cast<quint64>(truncated(number));
    return value.isDouble();
}

bool readValue(const QJsonValue &value, double &destination)
{
    destination = value.toDouble();
    return value.isDouble();
}

bool readValue(const QJsonValue &value, std::optional<tarnelLib::controller::Text> &destination)
{
    if (!value.isString())
        return false;
    const QString text = value.toString();
    destination.emplace(
        std::u16string_view(reinterpret_cast<const char16_t *>(text.utf16()), static_cast<std::size_t>(text.size())));
    return true;
}

} // namespace oracle
