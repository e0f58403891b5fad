#include "tools/tarnel/masking.h"

#include <cctype>
#include <cmath>

namespace tool {

std::string maskText(std::string_view text)
{
    std::string masked;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x80) {
            if (std::isdigit(byte) != 0)
                masked += '0';
            else if (std::isalpha(byte) != 0)
                masked += std::isupper(byte) != 0 ? 'X' : 'x';
            else
                masked += character;
        } else if (byte >= 0xf0) {
            masked += "\U0001F642";
        } else if (byte >= 0xe0) {
            masked += "字";
        } else if (byte >= 0xc0) {
            masked += "ж";
        } // What follows in the character is part of its replacement.
    }
    return masked;
}

double maskNumber(double number)
{
    return std::pow(10, std::floor(std::log10(std::max(1.0, number))));
}

double maskCoordinate(std::int64_t site, int position)
{
    // Spread evenly, and by nothing but the number of the site.
    constexpr double goldenRatio = 0.6180339887498949;
    constexpr double widest = 80;
    const double part = std::fmod(static_cast<double>(site) * goldenRatio * position, 1);
    return std::round(part * widest * 1000) / 1000;
}

void bindMaskedText(sqlite3_stmt *statement, int position, sqlite3_value *held)
{
    const auto *const first = reinterpret_cast<const char *>(sqlite3_value_text(held));
    if (first == nullptr) {
        sqlite3_bind_null(statement, position);
        return;
    }
    const std::string masked = maskText({first, static_cast<std::size_t>(sqlite3_value_bytes(held))});
    sqlite3_bind_text64(statement, position, masked.data(), masked.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void bindMaskedNumber(sqlite3_stmt *statement, int position, sqlite3_value *held)
{
    if (sqlite3_value_type(held) == SQLITE_NULL)
        sqlite3_bind_null(statement, position);
    else
        sqlite3_bind_double(statement, position, maskNumber(sqlite3_value_double(held)));
}

void bindMaskedCoordinate(sqlite3_stmt *statement, int position, sqlite3_value *held, std::int64_t site)
{
    if (sqlite3_value_type(held) == SQLITE_NULL)
        sqlite3_bind_null(statement, position);
    else
        sqlite3_bind_double(statement, position, maskCoordinate(site, position));
}

} // namespace tool
