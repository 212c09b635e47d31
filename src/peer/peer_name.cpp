#include "peer/peer_name.h"

#include <algorithm>
#include <array>
#include <utility>

#include "protocol/utf8.h"

namespace torvane {
namespace {

// What no name may have: controls, and what breaks lines or changes the direction of writing.
constexpr std::array<std::pair<char32_t, char32_t>, 7> kForbidden{{{0x00, 0x1F},
                                                                   {0x7F, 0x9F},
                                                                   {0x061C, 0x061C},
                                                                   {0x200E, 0x200F},
                                                                   {0x2028, 0x2029},
                                                                   {0x202A, 0x202E},
                                                                   {0x2066, 0x2069}}};

bool isForbidden(char32_t character) {
  return std::any_of(kForbidden.begin(), kForbidden.end(), [character](const auto& range) {
    return character >= range.first && character <= range.second;
  });
}

}  // namespace

bool isAcceptablePeerName(std::string_view name) {
  if (name.empty() || name.size() > kMaxPeerName || !isValidUtf8(name)) return false;
  while (const auto character = takeCharacter(name)) {
    if (isForbidden(*character)) return false;
  }
  return true;
}

}  // namespace torvane
