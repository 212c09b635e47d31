#pragma once

#include <optional>

#include "protocol/bytes.h"
#include "protocol/json.h"

namespace torvane {

// The message format of the peer link: a 4-byte big-endian header length, the header (one JSON
// object in UTF-8), then the body to the end of the message. Pure functions, any thread.
namespace P2PFrame {

// More values than any header has; a message full of them would hold up the thread that reads it.
inline constexpr std::size_t kMaxHeaderValues = 100'000;

struct Frame {
  JsonObject header;
  Bytes body;
};

// A decoded frame whose body lies inside the message it was read from.
struct View {
  JsonObject header;
  ByteView body;
};

// None when the header cannot be written as JSON. A header of 4 GiB or more ends the process:
// it can only be a mistake in the program.
[[nodiscard]] std::optional<Bytes> encode(const JsonObject& header, ByteView body);

// None for anything that is not a frame, or whose header has more than kMaxHeaderValues. The
// announced length is only compared with the length of the message; nothing is allocated by it.
[[nodiscard]] std::optional<Frame> decode(ByteView frame);
[[nodiscard]] std::optional<View> decodeView(ByteView frame);

}  // namespace P2PFrame
}  // namespace torvane
