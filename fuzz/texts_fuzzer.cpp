// Any bytes as base64, UTF-8 and a number, each held against a second way to decide.

#include <cmath>
#include <cstdlib>
#include <string>

#include "protocol/base64.h"
#include "protocol/decimal.h"
#include "protocol/device_key.h"
#include "protocol/utf8.h"
#include "require.h"

using namespace torvane;
using fuzz::require;

namespace {

void checkBase64(std::string_view text) {
  const auto bytes = base64Decode(text);
  require(!bytes || base64Encode(*bytes) == text, "bytes have one text");
  require(base64Decode(base64Encode(asBytes(text))) == toBytes(text), "bytes come back");
  const auto key = SigningPublicKey::fromDeviceKey(text);
  require(!key || key->deviceKey() == text, "a key has one device key");
}

void checkUtf8(std::string_view text) {
  if (!isValidUtf8(text)) return;
  for (std::size_t most = 0; most < text.size(); most += 1 + text.size() / 16) {
    const auto prefix = utf8Prefix(text, most);
    require(isValidUtf8(prefix) && text.starts_with(prefix), "a beginning is whole");
    require(prefix.size() <= most && prefix.size() + 4 > most, "and as long as it may be");
  }
}

void checkDecimal(const std::string& text) {
  const auto value = parseDecimal(text);
  if (!value) return;
  char* end = nullptr;
  const double expected = std::strtod(text.c_str(), &end);
  require(end == text.c_str() + text.size(), "a number is one for the C library as well");
  require(*value == expected && std::signbit(*value) == std::signbit(expected), "and the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(asText({data, size}));
  checkBase64(text);
  checkUtf8(text);
  checkDecimal(text);
  return 0;
}
