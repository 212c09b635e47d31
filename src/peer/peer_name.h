#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace torvane {

inline constexpr std::size_t kMaxPeerName = 63;  // bytes

// A peer's name as it can stand in a question to the user without changing what is asked; none for
// a name that cannot, whose peer a transport does not let reach the program: 1 to 63 bytes of UTF-8
// without control characters and line breaks, with something in it that is seen. Marks that turn
// the direction of writing and characters that show nothing are cut out; joiners and variation
// selectors, which shape the letters and emoji beside them, stay.
[[nodiscard]] std::optional<std::string> shownPeerName(std::string_view name);

}  // namespace torvane
