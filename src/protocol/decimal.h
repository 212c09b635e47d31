#pragma once

#include <optional>
#include <string_view>

namespace torvane {

// The double nearest to a number as JSON writes it, independent of the locale: what strtod gives
// in the C locale. Too small for a double reads as a zero of the same sign or the nearest
// subnormal; none when it is too large, or the text is not a number.
[[nodiscard]] std::optional<double> parseDecimal(std::string_view text);

}  // namespace torvane
