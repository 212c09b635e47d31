#include "protocol/decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <version>

namespace torvane {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Refuses what the conversions below take and JSON does not: "inf", "+1", ".5", "1e".
bool hasDigitAtBothEnds(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && isDigit(text.front()) && isDigit(text.back());
}

#if defined(__cpp_lib_to_chars)

// Of a number out of a double's range, whether it is too large: its first digit that is not zero
// stands before the decimal point where the exponent has moved that to.
bool isTooLarge(std::string_view text) {
  constexpr std::int64_t kFar = std::int64_t{1} << 62U;
  // find_first_of would take five times as long, which counts for a number of 16 MiB.
  const auto isMark = [](char c) { return c == 'e' || c == 'E'; };
  const auto mark = static_cast<std::size_t>(std::ranges::find_if(text, isMark) - text.begin());
  const auto digits = text.substr(0, mark);
  const auto point = std::min(digits.find('.'), digits.size());
  const auto* first =
      std::find_if(digits.begin(), digits.end(), [](char c) { return isDigit(c) && c != '0'; });
  const std::int64_t before = static_cast<std::int64_t>(point) - (first - digits.begin());

  auto power = text.substr(std::min(mark + 1, text.size()));
  if (power.starts_with('+')) power.remove_prefix(1);
  std::int64_t exponent = 0;
  const auto error = std::from_chars(power.data(), power.data() + power.size(), exponent).ec;
  if (error == std::errc::result_out_of_range) exponent = power.starts_with('-') ? -kFar : kFar;
  return before + std::clamp(exponent, -kFar, kFar) > 0;
}

std::optional<double> convert(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size()) return std::nullopt;
  if (error == std::errc{}) return value;
  if (isTooLarge(text)) return std::nullopt;
  return text.starts_with('-') ? -0.0 : 0.0;
}

#else

// Exact as well, but slow.
std::optional<double> convert(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  if (!stream.eof()) return std::nullopt;
  if (stream.fail() && std::abs(value) >= 1) return std::nullopt;  // overflow
  return value;
}

#endif

}  // namespace

std::optional<double> parseDecimal(std::string_view text) {
  return hasDigitAtBothEnds(text) ? convert(text) : std::nullopt;
}

}  // namespace torvane
