#pragma once

#include <string>
#include <string_view>

/// Between the library's UTF-16 and a terminal's UTF-8.
namespace demo {

std::string utf8(std::u16string_view text);

/// A text that the library handed out; a dash where there is none.
std::string utf8(const unsigned short *text);

std::u16string utf16(std::string_view text);

/// How many columns of a terminal a text takes: wide characters take two, combining ones none.
std::size_t displayWidth(std::string_view text);

} // namespace demo
