#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace generator {

using std::u16string_view;

/// A place with its coordinates in ten-thousandths of a degree.
struct City {
    u16string_view name;
    std::int32_t latitude;
    std::int32_t longitude;
};

constexpr std::size_t detectorCount = 8;
constexpr std::size_t eventClassCount = 8;

/// What records are worded with. In patterns `$f` is a family name, `$g` a given name, `$n` a number, `$s` a street and
/// `$c` a city. People and firms are invented.
struct Language {
    u16string_view iso;
    u16string_view description;
    u16string_view phonePrefix;
    std::int32_t secondsToUtc; ///< Local time minus UTC.
    u16string_view personPattern;
    u16string_view addressPattern;
    std::array<City, 3> cities;
    std::array<u16string_view, 8> givenNames;
    std::array<u16string_view, 8> familyNames;
    std::array<u16string_view, 6> streets;
    std::array<u16string_view, 3> firms;
    std::array<u16string_view, 10> sites;
    std::array<u16string_view, 6> sections;
    std::array<u16string_view, detectorCount> zones; ///< By detector code less one.
    std::array<u16string_view, 4> comments;
    std::array<u16string_view, eventClassCount> events; ///< By event class less one.
};

extern const std::array<Language, 9> languages;

} // namespace generator
