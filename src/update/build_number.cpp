#include "update/build_number.h"

#include <vector>

#include "protocol/numeric_characters.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::size_t kTooManyCharacters = 32;

// Unicode's separators, and the controls that break or indent lines.
bool isWhiteSpace(char32_t c) {
  return c == 0x20 || (c >= 0x09 && c <= 0x0D) || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

std::string_view afterWhiteSpace(std::string_view text) {
  std::string_view rest = text;
  for (auto c = takeCharacter(rest); c && isWhiteSpace(*c); c = takeCharacter(rest)) text = rest;
  return text;
}

using Digits = std::vector<int>;  // of a number, the most significant first, no leading zeros

// Takes the run of decimal digits at the beginning; none when there is no digit.
std::optional<Digits> takeDigits(std::string_view& text) {
  std::optional<Digits> digits;
  std::string_view rest = text;
  for (auto c = takeCharacter(rest); c; c = takeCharacter(rest)) {
    const auto digit = decimalDigit(*c);
    if (!digit) break;
    if (!digits) digits.emplace();
    if (*digit != 0 || !digits->empty()) digits->push_back(*digit);
    text = rest;
  }
  return digits;
}

std::weak_ordering compareDigits(const Digits& left, const Digits& right) {
  if (left.size() != right.size()) return left.size() <=> right.size();
  return left <=> right;
}

}  // namespace

std::string_view trimmedText(std::string_view text) {
  text = afterWhiteSpace(text);
  std::string_view rest = text;
  std::size_t end = 0;  // behind the last character that stays
  while (const auto c = takeCharacter(rest)) {
    if (!isWhiteSpace(*c)) end = text.size() - rest.size();
  }
  return text.substr(0, rest.empty() ? end : text.size());
}

std::optional<std::string> parseBuildNumber(ByteView versionFile) {
  if (!isValidUtf8(asText(versionFile))) return std::nullopt;
  const std::string_view build = trimmedText(asText(versionFile));
  std::size_t length = 0;
  for (std::string_view rest = build; !rest.empty(); ++length) {
    const auto character = takeCharacter(rest);
    if (!character || !isNumericCharacter(*character)) return std::nullopt;
  }
  if (length == 0 || length >= kTooManyCharacters) return std::nullopt;
  return std::string(build);
}

std::weak_ordering compareBuilds(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    std::string_view leftRest = left;
    std::string_view rightRest = right;
    const auto leftNumber = takeDigits(leftRest);
    const auto rightNumber = takeDigits(rightRest);
    std::weak_ordering order = std::weak_ordering::equivalent;
    if (leftNumber && rightNumber) {
      order = compareDigits(*leftNumber, *rightNumber);
    } else {
      leftRest = left;
      rightRest = right;
      const auto leftCharacter = takeCharacter(leftRest);
      const auto rightCharacter = takeCharacter(rightRest);
      if (!leftCharacter || !rightCharacter) break;  // no text: nothing that could be compared
      order = *leftCharacter <=> *rightCharacter;
    }
    if (std::is_neq(order)) return order;
    left = leftRest;
    right = rightRest;
  }
  return left.size() <=> right.size();
}

}  // namespace torvane
