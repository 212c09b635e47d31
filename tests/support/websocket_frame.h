#pragma once

#include <array>

#include "protocol/bytes.h"

namespace torvane::testing {

// A client's WebSocket frame header (RFC 6455, section 5.2): what `first` says (0x82: a whole
// binary message), the announced length and the mask.
inline Bytes clientFrameHeader(std::uint8_t first, std::uint64_t length,
                               const std::array<std::uint8_t, 4>& mask = {}) {
  Bytes header{first};
  const int lengthBytes = length < 126 ? 0 : length < 65536 ? 2 : 8;
  header.push_back(lengthBytes == 0   ? static_cast<std::uint8_t>(0x80U | length)
                   : lengthBytes == 2 ? 0xFE
                                      : 0xFF);
  for (int i = lengthBytes - 1; i >= 0; --i) {
    header.push_back(static_cast<std::uint8_t>(length >> (8U * static_cast<unsigned>(i))));
  }
  header.insert(header.end(), mask.begin(), mask.end());
  return header;
}

inline Bytes clientFrame(std::uint8_t first, ByteView payload,
                         const std::array<std::uint8_t, 4>& mask = {}) {
  Bytes frame = clientFrameHeader(first, payload.size(), mask);
  for (std::size_t i = 0; i < payload.size(); ++i) {
    frame.push_back(static_cast<std::uint8_t>(payload[i] ^ mask.at(i % 4)));
  }
  return frame;
}

}  // namespace torvane::testing
