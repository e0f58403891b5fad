#pragma once

#include "controller/entities/text.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>
#include <string_view>

namespace tarnelLib::controller {

/// The object that a text consists of; nothing if the text is no JSON object.
std::optional<QJsonObject> deserializeJsonObject(std::u16string_view text);

/// The value under a key, of undefined type where there is none.
QJsonValue valueOf(const QJsonObject &object, std::string_view key);

/// A number cut to a whole one; 0 beyond the signed 64-bit range.
qint64 truncated(double number);

// The readers of single values: false if the value is not of the type that the destination takes.

/// The low 32 bits of the number cut to a whole one: -1 reads as 4294967295, 1.9 as 1.
[[nodiscard]] bool readValue(const QJsonValue &value, quint32 &destination);
/// A whole number within 32 bits; any other number reads as 0.
[[nodiscard]] bool readValue(const QJsonValue &value, qint32 &destination);
/// The low 8 bits of what reads as a signed number: 300 reads as 44, 2.5 as 0.
[[nodiscard]] bool readValue(const QJsonValue &value, quint8 &destination);
/// A number is true unless it reads as the signed number 0. The JSON values true and false are taken, and are no
/// numbers: both read as false.
[[nodiscard]] bool readValue(const QJsonValue &value, bool &destination);
/// The number cut to a whole one, up to 2^64.
[[nodiscard]] bool readValue(const QJsonValue &value, quint64 &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, double &destination);
[[nodiscard]] bool readValue(const QJsonValue &value, std::optional<Text> &destination);

} // namespace tarnelLib::controller
