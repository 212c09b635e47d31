#pragma once

#include <string>
#include <string_view>

namespace torvane {

// A name that nobody can take for one that carries the digits of a pairing: somebody in the middle
// could otherwise bring those that the other end shows as a part of his name. Where six or more
// characters of the name are digits of any script, or letters that look like digits in a word of
// digits or alone, each of them becomes "#"; other names stay as they are. `name` is UTF-8.
[[nodiscard]] std::string withDigitsMasked(std::string_view name);

}  // namespace torvane
