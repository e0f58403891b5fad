#pragma once

#include "entities/text.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>
#include <string_view>

/// How Qt's JSON parser reads requests. The library's own reader must give the same for every text.
namespace oracle {

/// The object that a text consists of; nothing if the text is no JSON object.
std::optional<QJsonObject> deserializeJsonObject(std::u16string_view text);

/// The value under a key, of undefined type where there is none.
QJsonValue valueOf(const QJsonObject &object, std::string_view key);

/// A number cut to a whole one; 0 beyond the signed 64-bit range.
qint64 truncated(double number);

// The readers of single values: false if the value is not of the type that the destination takes.

[[nodiscard]] bool readValue(const QJsonValue &value, quint32 &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, qint32 &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, quint8 &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, bool &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, quint64 &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, double &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, std::optional<tarnelLib::controller::Text> &destination);

} // namespace oracle
