#include "protocol/base64.h"

#include <sodium.h>

#include <algorithm>

namespace torvane {

std::string base64Encode(ByteView bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // the library counts and writes a terminator
  return text;
}

std::optional<Bytes> base64Decode(std::string_view text) {
  // The library (1.0.18) reads every byte above 0x7F as a slash.
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (!std::all_of(text.begin(), text.end(), isAscii)) return std::nullopt;

  Bytes bytes(text.size() / 4 * 3 + 3);
  std::size_t length = 0;
  // Without an end pointer and a list of ignored characters the library accepts nothing but one
  // complete, canonical text.
  if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &length,
                        nullptr, sodium_base64_VARIANT_ORIGINAL) != 0) {
    return std::nullopt;
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace torvane
