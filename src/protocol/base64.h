#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace torvane {

// Standard alphabet with padding (RFC 4648, section 4).
[[nodiscard]] std::string base64Encode(ByteView bytes);

// Strict: no white space, no missing or surplus padding, no byte outside the alphabet. The bits of
// the last character that stand for nothing are passed over.
[[nodiscard]] std::optional<Bytes> base64Decode(std::string_view text);

}  // namespace torvane
