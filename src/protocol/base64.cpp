#include "protocol/base64.h"

#include <sodium.h>

#include <array>
#include <utility>

namespace torvane {
namespace {

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> digitValues() {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  std::uint8_t value = 0;
  for (const char digit : kAlphabet) values[static_cast<std::uint8_t>(digit)] = value++;
  return values;
}

constexpr auto kDigitValues = digitValues();

}  // namespace

std::string base64Encode(ByteView bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // the library counts and writes a terminator
  return text;
}

// Not left to libsodium, whose decoder (1.0.18) reads every byte above 0x7F as a slash.
std::optional<Bytes> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  for (int padding = 0; padding < 2 && text.ends_with('='); ++padding) text.remove_suffix(1);

  Bytes bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t bits = 0;
  unsigned waiting = 0;
  for (const char digit : text) {
    const std::uint8_t value = kDigitValues[static_cast<std::uint8_t>(digit)];
    if (value == kNoDigit) return std::nullopt;
    bits = bits << 6U | value;
    waiting += 6;
    if (waiting >= 8) {
      waiting -= 8;
      bytes.push_back(static_cast<std::uint8_t>(bits >> waiting));
    }
  }
  const std::uint32_t unused = bits & ((1U << waiting) - 1);
  return unused == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace torvane
