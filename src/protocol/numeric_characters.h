#pragma once

#include <optional>

namespace torvane {

// Whether Unicode gives the character a numeric value: digits of every script, and also fractions,
// Roman numerals and number ideographs.
[[nodiscard]] bool isNumericCharacter(char32_t character);

// The value of a digit of decimal numbers, in any script.
[[nodiscard]] std::optional<int> decimalDigit(char32_t character);

}  // namespace torvane
