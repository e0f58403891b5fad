#pragma once

#include "tools/tarnel/records.h"

#include <string>

namespace tool {

/// What becomes of a column in a redacted file.
enum class Masking { Kept, Text, Number, Coordinate };

/// Every text is taken for a personal one, so that a new field is masked before anybody thinks of it; but languages are
/// not. Of the numbers only some say something about people.
template <class Record, class Row>
constexpr Masking maskingOf(const Row &row)
{
    if constexpr (requires { row.member; } && !std::is_same_v<Record, lib::Locale>) {
        using Member = std::remove_cvref_t<decltype(row.member)>;
        if constexpr (std::is_same_v<Member, std::optional<lib::Text> Record::*>)
            return Masking::Text;
        else if constexpr (std::is_same_v<Member, std::optional<double> Record::*>)
            return Masking::Coordinate;
        else if constexpr (std::is_same_v<Member, decltype(&lib::User::phone)>)
            return row.member == &lib::User::phone ? Masking::Number : Masking::Kept;
    }
    return Masking::Kept;
}

/// The text with its letters and digits replaced by others that take as many bytes. Blanks and punctuation stay, so
/// that it still looks as a name, an address or a mail address does.
[[nodiscard]] std::string maskText(std::string_view text);

/// A number of as many digits.
[[nodiscard]] double maskNumber(double number);
/// Somewhere else, and always the same for a site and a column of it.
[[nodiscard]] double maskCoordinate(std::int64_t site, int position);

// Binds a masked value to a statement; NULL stays NULL.

void bindMaskedText(sqlite3_stmt *statement, int position, sqlite3_value *held);
void bindMaskedNumber(sqlite3_stmt *statement, int position, sqlite3_value *held);
void bindMaskedCoordinate(sqlite3_stmt *statement, int position, sqlite3_value *held, std::int64_t site);

} // namespace tool
