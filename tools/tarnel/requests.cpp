#include "tools/tarnel/requests.h"

#include "tools/tarnel/valuecheck.h"

#include <cmath>

namespace tool {

namespace {

std::string decimal(double value)
{
    constexpr double exact = 9007199254740992; // 2^53
    if (!std::isfinite(value))
        return {};
    if (value == std::floor(value) && std::abs(value) < exact)
        return std::to_string(static_cast<std::int64_t>(value));
    return fmt::format("{}", value);
}

/// A text of which a part is no Unicode. Half a pair of UTF-16 is stored in three bytes, as if it were a character.
std::string escaped(std::string_view bytes)
{
    std::string json = "\"";
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t begin = i;
        static_cast<void>(tarnel::detail::next(bytes, i));
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
        if (byte(begin) == 0xed && begin + 2 < bytes.size() && byte(begin + 1) >= 0xa0) {
            json += fmt::format("\\u{:04x}", 0xd000U | (byte(begin + 1) & 0x3fU) << 6U | (byte(begin + 2) & 0x3fU));
            i = begin + 3;
            continue;
        }
        const std::string character =
            Json(bytes.substr(begin, i - begin)).dump(-1, ' ', false, Json::error_handler_t::replace);
        json += std::string_view(character).substr(1, character.size() - 2);
    }
    return json + "\"";
}

} // namespace

std::string requestValue(sqlite3_value *held, bool isText)
{
    const int type = sqlite3_value_type(held);
    if (type == SQLITE_NULL)
        return {};
    if (!isText)
        return type == SQLITE_INTEGER ? std::to_string(sqlite3_value_int64(held)) : decimal(sqlite3_value_double(held));
    const auto *const first = reinterpret_cast<const char *>(sqlite3_value_text(held));
    const std::string_view bytes(first, static_cast<std::size_t>(sqlite3_value_bytes(held)));
    std::string text = isUnicode(bytes) ? Json(bytes).dump() : escaped(bytes);
    // SQLite takes what looks like a byte-order mark off a text that it is given, and turns the text round by it.
    if (bytes.starts_with("\xef\xbb\xbf") || bytes.starts_with("\xef\xbf\xbe"))
        text.insert(1, "\\ufeff");
    return text;
}

} // namespace tool
