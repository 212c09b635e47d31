#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace torvane {

// An iPad's Ed25519 public key (RFC 8032). Its standard base64 text, 44 characters, is the
// device's identity everywhere: the "device key".
class SigningPublicKey {
 public:
  static constexpr std::size_t kRawSize = 32;

  // None when `raw` is not 32 bytes.
  [[nodiscard]] static std::optional<SigningPublicKey> fromRaw(ByteView raw);
  [[nodiscard]] static std::optional<SigningPublicKey> fromDeviceKey(std::string_view deviceKey);

  [[nodiscard]] std::string deviceKey() const;

  // False for a signature of other than 64 bytes, for a key of small order, and for every
  // encoding that RFC 8032 does not allow.
  [[nodiscard]] bool isValidSignature(ByteView signature, ByteView message) const;

 private:
  std::array<std::uint8_t, kRawSize> raw_{};
};

}  // namespace torvane
