#pragma once

#include <string>
#include <string_view>

namespace torvane::ipad {

// A text that came over the network, safe for a terminal: control characters, characters that
// change the writing direction and bytes that are not UTF-8 become "?". Line breaks and tabs stay
// when `keepLines` says so.
[[nodiscard]] std::string printable(std::string_view text, bool keepLines = false);

}  // namespace torvane::ipad
