#include "tools/tarnel/valuecheck.h"

#include <cmath>
#include <cstring>

namespace tool {

bool isUnicode(std::string_view bytes)
{
    for (std::size_t i = 0; i < bytes.size();) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80) {
            ++i;
            continue;
        }
        const std::size_t begin = i;
        if (tarnel::detail::next(bytes, i) == tarnel::detail::replacement &&
            bytes.substr(begin, i - begin) != "\xef\xbf\xbd")
            return false;
    }
    return true;
}

const char *oddityOfText(sqlite3_value *held)
{
    if (sqlite3_value_type(held) != SQLITE_TEXT)
        return "no text, and not stored by the library";
    const auto *const first = reinterpret_cast<const char *>(sqlite3_value_text(held));
    const std::string_view bytes(first, static_cast<std::size_t>(sqlite3_value_bytes(held)));
    if (std::memchr(first, 0, bytes.size()) != nullptr)
        return "a text with a zero in it: clients in C see it end there";
    return isUnicode(bytes) ? nullptr : "no valid Unicode: clients are handed U+FFFD in its place";
}

const char *oddityOfNumber(sqlite3_value *held, double least, double most, bool isWhole)
{
    const int type = sqlite3_value_type(held);
    if (type != SQLITE_INTEGER && type != SQLITE_FLOAT)
        return "no number, and not stored by the library";
    const double number = sqlite3_value_double(held);
    if (number < least || number > most || (isWhole && number != std::floor(number)))
        return "out of the field's range, and not stored by the library: clients are handed it cut";
    constexpr double minusOne = std::numeric_limits<quint32>::max();
    if (most == minusOne && number == minusOne)
        return "4294967295, which a request's -1 was cut to";
    return nullptr;
}

} // namespace tool
