#include "protocol/decimal.h"

#include <charconv>
#include <cmath>
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

// The standard stream's conversion is exact but slow; it serves the texts, and the standard
// libraries, that std::from_chars does not.
std::optional<double> parseByStream(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  if (!stream.eof()) return std::nullopt;
  if (stream.fail() && std::abs(value) >= 1) return std::nullopt;  // overflow
  return value;
}

}  // namespace

std::optional<double> parseDecimal(std::string_view text) {
  if (!hasDigitAtBothEnds(text)) return std::nullopt;
#if defined(__cpp_lib_to_chars)
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size()) return std::nullopt;
  if (error == std::errc{}) return value;
  if (error != std::errc::result_out_of_range) return std::nullopt;
#endif
  return parseByStream(text);
}

}  // namespace torvane
