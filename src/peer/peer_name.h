#pragma once

#include <cstddef>
#include <string_view>

namespace torvane {

inline constexpr std::size_t kMaxPeerName = 63;  // bytes

// 1 to 63 bytes of UTF-8 without control characters, line breaks and changes of direction, so
// that it can stand in a question to the user without changing what is asked. A transport lets no
// peer of any other name reach the program.
[[nodiscard]] bool isAcceptablePeerName(std::string_view name);

}  // namespace torvane
