#include "torvane_ipad/printable.h"

#include <array>
#include <cstdint>

#include "protocol/utf8.h"

namespace torvane::ipad {
namespace {

// The shortest well-formed character at the start; empty when the bytes are not UTF-8.
std::string_view firstCharacter(std::string_view text) {
  for (std::size_t length = 1; length <= 4 && length <= text.size(); ++length) {
    if (isValidUtf8(text.substr(0, length))) return text.substr(0, length);
  }
  return {};
}

bool isHarmful(std::string_view character) {
  const auto first = static_cast<std::uint8_t>(character[0]);
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  if (character.size() == 2) {
    const auto second = static_cast<std::uint8_t>(character[1]);
    return (first == 0xC2 && second < 0xA0) || character == "\u061C";
  }
  static constexpr std::array<std::string_view, 13> kDirection = {
      "\u200E", "\u200F", "\u2028", "\u2029", "\u202A", "\u202B", "\u202C",
      "\u202D", "\u202E", "\u2066", "\u2067", "\u2068", "\u2069"};
  for (const auto& mark : kDirection) {
    if (character == mark) return true;
  }
  return false;
}

}  // namespace

std::string printable(std::string_view text, bool keepLines) {
  std::string result;
  while (!text.empty()) {
    const std::string_view character = firstCharacter(text);
    const bool isKept = keepLines && (text[0] == '\n' || text[0] == '\t');
    if (!isKept && (character.empty() || isHarmful(character))) {
      result += '?';
    } else {
      result += character;
    }
    text.remove_prefix(character.empty() ? 1 : character.size());
  }
  return result;
}

}  // namespace torvane::ipad
