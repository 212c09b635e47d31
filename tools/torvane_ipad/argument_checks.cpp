#include "torvane_ipad/argument_checks.h"

#include <algorithm>
#include <charconv>

namespace torvane::ipad {
namespace {

bool isLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Letters, digits and these marks, one of them at least.
bool isMadeOf(std::string_view text, std::string_view marks) {
  return !text.empty() && std::ranges::all_of(text, [&](char c) {
    return isLetterOrDigit(c) || marks.find(c) != marks.npos;
  });
}

}  // namespace

std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t least,
                                         std::uint64_t most) {
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || value < least || value > most) return std::nullopt;
  return value;
}

bool isMethod(std::string_view text) {
  return isMadeOf(text, "!#$%&'*+-.^_`|~");
}

bool isRequestPath(std::string_view text) {
  return text.starts_with('/') && isMadeOf(text, "-._~:/?@!$&'()*+,;=%");
}

}  // namespace torvane::ipad
