#pragma once

#include <string_view>

#include "protocol/bytes.h"

namespace torvane::fuzz {

// A frame of fuzzed text: the header is what stands before the first zero byte, the body what
// stands behind it. Spares the fuzzer the search for lengths that fit.
inline Bytes framed(std::string_view text) {
  const auto header = text.substr(0, text.find('\0'));
  const auto body = text.substr(header.size() < text.size() ? header.size() + 1 : header.size());
  Bytes frame;
  for (unsigned shift = 32; shift > 0; shift -= 8) {
    frame.push_back(static_cast<std::uint8_t>(header.size() >> (shift - 8)));
  }
  frame.insert(frame.end(), header.begin(), header.end());
  frame.insert(frame.end(), body.begin(), body.end());
  return frame;
}

}  // namespace torvane::fuzz
