#pragma once

#include <string_view>

namespace tool {

/// The page of the report, with a place for its data. Empty, if the tool was built where it could not be made.
[[nodiscard]] std::string_view pageTemplate();

/// What stands in the page where its data belongs.
constexpr std::string_view placeOfData = "{{data}}";

} // namespace tool
