#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace torvane {

// Standard alphabet with padding (RFC 4648, section 4).
[[nodiscard]] std::string base64Encode(ByteView bytes);

// Strict, so that bytes have one text only: no white space, no missing or surplus padding, no byte
// outside the alphabet, no unused bits set.
[[nodiscard]] std::optional<Bytes> base64Decode(std::string_view text);

}  // namespace torvane
