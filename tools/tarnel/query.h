#pragma once

#include "storage/connection.h"

#include <cstdint>
#include <optional>
#include <string>

/// Questions to a cache that the library itself does not ask.
namespace tool {

/// A text of the file as UTF-8.
[[nodiscard]] std::string utf8(const tarnelLib::controller::Text &text);
[[nodiscard]] std::string utf8(const unsigned short *text);

/// The number in the first column of the first row; nothing if there is none, or if it cannot be read.
[[nodiscard]] std::optional<std::int64_t> number(tarnelLib::controller::Connection &connection, const std::string &sql);

} // namespace tool
