#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace torvane {

// Whether the whole text is well-formed UTF-8 (RFC 3629): no overlong forms, no surrogates,
// nothing above U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view text);

// The longest beginning of a well-formed text that has at most `most` bytes and cuts no
// character in two.
[[nodiscard]] std::string_view utf8Prefix(std::string_view text, std::size_t most);

// The longest end of such a text, likewise.
[[nodiscard]] std::string_view utf8Suffix(std::string_view text, std::size_t most);

// Takes the first character off a text; none, and nothing taken, when the text is empty or does not
// begin with a well-formed character.
[[nodiscard]] std::optional<char32_t> takeCharacter(std::string_view& text);

}  // namespace torvane
