#include "protocol/utf8.h"

#include <cstdint>

namespace torvane {
namespace {

bool isContinuation(char byte) {
  return (static_cast<std::uint8_t>(byte) & 0xC0U) == 0x80U;
}

// The length in bytes of the character that begins with `lead`, and the bounds of its second byte
// (RFC 3629, section 4); length 0 for a byte that begins no character.
struct Shape {
  std::size_t length;
  std::uint8_t low = 0x80;
  std::uint8_t high = 0xBF;
};

Shape shapeOf(std::uint8_t lead) {
  if (lead < 0x80) return {1};
  if (lead < 0xC2) return {0};
  if (lead < 0xE0) return {2};
  if (lead < 0xF0) {
    if (lead == 0xE0) return {3, 0xA0, 0xBF};
    if (lead == 0xED) return {3, 0x80, 0x9F};
    return {3};
  }
  if (lead == 0xF0) return {4, 0x90, 0xBF};
  if (lead == 0xF4) return {4, 0x80, 0x8F};
  return {lead < 0xF4 ? std::size_t{4} : std::size_t{0}};
}

// The bytes of the character at the start of a text that is not empty; 0 when it is malformed.
std::size_t characterLength(std::string_view text) {
  const Shape shape = shapeOf(static_cast<std::uint8_t>(text[0]));
  if (shape.length <= 1) return shape.length;
  if (text.size() < shape.length) return 0;
  const auto second = static_cast<std::uint8_t>(text[1]);
  if (second < shape.low || second > shape.high) return 0;
  for (std::size_t i = 2; i < shape.length; ++i) {
    if (!isContinuation(text[i])) return 0;
  }
  return shape.length;
}

}  // namespace

bool isValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string_view utf8Prefix(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  while (most > 0 && isContinuation(text[most])) --most;
  return text.substr(0, most);
}

std::string_view utf8Suffix(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  text.remove_prefix(text.size() - most);
  while (!text.empty() && isContinuation(text.front())) text.remove_prefix(1);
  return text;
}

std::optional<char32_t> takeCharacter(std::string_view& text) {
  const std::size_t length = text.empty() ? 0 : characterLength(text);
  if (length == 0) return std::nullopt;
  const auto lead = static_cast<std::uint8_t>(text[0]);
  char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    character = (character << 6U) | (static_cast<std::uint8_t>(text[i]) & 0x3FU);
  }
  text.remove_prefix(length);
  return character;
}

}  // namespace torvane
