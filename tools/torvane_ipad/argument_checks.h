#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace torvane::ipad {

// Decimal digits and nothing else, with a value in these bounds.
[[nodiscard]] std::optional<std::uint64_t> wholeNumber(std::string_view text, std::uint64_t least,
                                                       std::uint64_t most);

// A token (RFC 9110, section 5.6.2); the helper forwards nothing else as a method.
[[nodiscard]] bool isMethod(std::string_view text);

// A slash and what a URL allows behind it (RFC 3986, section 2); the helper drops other requests
// without a word.
[[nodiscard]] bool isRequestPath(std::string_view text);

}  // namespace torvane::ipad
