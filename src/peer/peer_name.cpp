#include "peer/peer_name.h"

#include <algorithm>
#include <array>

#include "protocol/utf8.h"

namespace torvane {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Controls, and what breaks lines.
constexpr std::array<Range, 3> kForbidden{{{0x00, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x2029}}};

// Seen only through what stands before them: joiners, variation selectors (also Mongolian ones).
constexpr std::array<Range, 5> kShaping{
    {{0x180B, 0x180F}, {0x200C, 0x200D}, {0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}, {0x034F, 0x034F}}};

// The tags spell the region of a flag behind this one, and show nothing anywhere else.
constexpr char32_t kBlackFlag = 0x1F3F4;
constexpr Range kTags{0xE0020, 0xE007F};

// The rest of Unicode's Default_Ignorable_Code_Point (15.0), among them the marks of direction;
// the interlinear annotations, and the blank among the patterns of Braille.
constexpr std::array<Range, 15> kShowNothing{{{0x00AD, 0x00AD},
                                              {0x061C, 0x061C},
                                              {0x115F, 0x1160},
                                              {0x17B4, 0x17B5},
                                              {0x200B, 0x200F},
                                              {0x202A, 0x202E},
                                              {0x2060, 0x206F},
                                              {0x2800, 0x2800},
                                              {0x3164, 0x3164},
                                              {0xFEFF, 0xFEFF},
                                              {0xFFA0, 0xFFA0},
                                              {0xFFF0, 0xFFFB},
                                              {0x1BCA0, 0x1BCA3},
                                              {0x1D173, 0x1D17A},
                                              {0xE0000, 0xE0FFF}}};

constexpr std::array<Range, 7> kSpaces{{{0x20, 0x20},
                                        {0xA0, 0xA0},
                                        {0x1680, 0x1680},
                                        {0x2000, 0x200A},
                                        {0x202F, 0x202F},
                                        {0x205F, 0x205F},
                                        {0x3000, 0x3000}}};

bool holds(const Range& range, char32_t character) {
  return character >= range.first && character <= range.last;
}

template <std::size_t count>
bool isIn(const std::array<Range, count>& ranges, char32_t character) {
  return std::ranges::any_of(ranges, [&](const Range& range) { return holds(range, character); });
}

bool isKept(char32_t character, char32_t before) {
  if (holds(kTags, character)) return before == kBlackFlag || holds(kTags, before);
  return isIn(kShaping, character) || !isIn(kShowNothing, character);
}

bool isSeen(char32_t character) {
  return !isIn(kShowNothing, character) && !isIn(kShaping, character) && !isIn(kSpaces, character);
}

}  // namespace

std::optional<std::string> shownPeerName(std::string_view name) {
  if (name.size() > kMaxPeerName || !isValidUtf8(name)) return std::nullopt;
  std::string shown;
  bool hasSeen = false;
  char32_t before = 0;  // of what is kept
  while (!name.empty()) {
    const std::string_view rest = name;
    const char32_t character = takeCharacter(name).value_or(0);
    if (isIn(kForbidden, character)) return std::nullopt;
    if (!isKept(character, before)) continue;
    shown += rest.substr(0, rest.size() - name.size());
    hasSeen = hasSeen || isSeen(character);
    before = character;
  }
  return hasSeen ? std::optional(std::move(shown)) : std::nullopt;
}

}  // namespace torvane
