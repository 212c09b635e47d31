#pragma once

#include <string>
#include <string_view>

namespace torvane {

// A token of RFC 9110, section 5.6.2: what a method may be.
[[nodiscard]] bool isHttpToken(std::string_view text);

// No control character, so that the value cannot end its header line.
[[nodiscard]] bool isHeaderValue(std::string_view text);

// The text itself when it is UTF-8, else each byte as the Latin-1 character it stands for.
[[nodiscard]] std::string utf8FromHeader(std::string_view value);

// A capital first, a full stop last, UTF-8, no control characters.
[[nodiscard]] std::string asSentence(std::string_view text);

}  // namespace torvane
