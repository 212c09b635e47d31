#include "peer/masked_digits.h"

#include <algorithm>
#include <vector>

#include "protocol/numeric_characters.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::size_t kDigits = 6;  // of a pairing
constexpr std::u32string_view kLikeDigits = U"OoΟοОоIl|ΙІӀSЅBΒВZΖЗЧб";

enum class Kind { digit, likeDigit, letter, separator };

struct Character {
  std::string_view bytes;
  Kind kind;
  bool isMasked;
};

Kind kindOf(char32_t character) {
  if (isNumericCharacter(character)) return Kind::digit;
  if (kLikeDigits.find(character) != kLikeDigits.npos) return Kind::likeDigit;
  const char32_t lowered = character | 0x20U;
  return character < 0x80 && lowered >= U'a' && lowered <= U'z' ? Kind::letter : Kind::separator;
}

std::vector<Character> charactersOf(std::string_view name) {
  std::vector<Character> characters;
  while (!name.empty()) {
    const std::string_view rest = name;
    const auto character = takeCharacter(name);
    if (!character) break;
    const Kind kind = kindOf(*character);
    characters.push_back({rest.substr(0, rest.size() - name.size()), kind, kind == Kind::digit});
  }
  return characters;
}

// A word without other letters that has a digit or is one letter long: "9l3", "O".
template <typename Iterator>
void maskLikeDigits(Iterator begin, Iterator end) {
  const auto is = [](Kind kind) { return [kind](const Character& c) { return c.kind == kind; }; };
  if (std::any_of(begin, end, is(Kind::letter))) return;
  if (end - begin > 1 && std::none_of(begin, end, is(Kind::digit))) return;
  for (auto c = begin; c != end; ++c) c->isMasked = true;
}

}  // namespace

std::string withDigitsMasked(std::string_view name) {
  auto characters = charactersOf(name);
  const auto isSeparator = [](const Character& c) { return c.kind == Kind::separator; };
  for (auto word = characters.begin(); word != characters.end();) {
    const auto end = std::find_if(word, characters.end(), isSeparator);
    maskLikeDigits(word, end);
    word = std::find_if_not(end, characters.end(), isSeparator);
  }
  if (std::ranges::count(characters, true, &Character::isMasked) <
      static_cast<std::ptrdiff_t>(kDigits)) {
    return std::string(name);
  }
  std::string masked;
  for (const Character& c : characters) masked += c.isMasked ? "#" : c.bytes;
  return masked;
}

}  // namespace torvane
