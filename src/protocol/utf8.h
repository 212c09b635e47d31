#pragma once

#include <string>
#include <string_view>

namespace torvane {

// Whether the whole text is well-formed UTF-8 (RFC 3629): no overlong forms, no surrogates,
// nothing above U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view text);

// The longest beginning of a well-formed text that has at most `most` bytes and cuts no
// character in two.
[[nodiscard]] std::string_view utf8Prefix(std::string_view text, std::size_t most);

}  // namespace torvane
