#include "protocol/decimal.h"

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>
#include <string>
#include <version>

namespace torvane {
namespace {

// The standard stream's conversion is exact but slow; it serves the texts, and the standard
// libraries, that std::from_chars does not.
std::optional<double> parseByStream(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  if (stream.fail() && std::abs(value) >= 1) return std::nullopt;  // overflow
  return value;
}

}  // namespace

std::optional<double> parseDecimal(std::string_view text) {
#if defined(__cpp_lib_to_chars)
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc{} && end == text.data() + text.size()) return value;
  if (error != std::errc::result_out_of_range) return std::nullopt;
#endif
  return parseByStream(text);
}

}  // namespace torvane
