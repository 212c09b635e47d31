#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/bytes.h"
#include "protocol/device_key.h"
#include "protocol/json.h"

namespace torvane::test {

// An iPad for tests: a signing key made from a seed, and the messages that an iPad sends.
class SigningDevice {
 public:
  static constexpr std::size_t kSeedSize = 32;

  // Every byte of the secret seed is `seed`, so that each number is another device.
  explicit SigningDevice(std::uint8_t seed);
  explicit SigningDevice(const std::array<std::uint8_t, kSeedSize>& seed);

  [[nodiscard]] const SigningPublicKey& publicKey() const { return publicKey_; }
  [[nodiscard]] std::string deviceKey() const { return publicKey_.deviceKey(); }
  [[nodiscard]] Bytes rawKey() const;

  // The 64 bytes of the Ed25519 signature of `message`.
  [[nodiscard]] Bytes sign(ByteView message) const;

  // A signed request: an envelope around the frame of `header` and `body`.
  [[nodiscard]] Bytes envelope(std::string_view challenge, const JsonObject& header,
                               ByteView body = {}) const;

  // An envelope around any bytes, correctly signed.
  [[nodiscard]] Bytes envelopeAround(std::string_view challenge, ByteView inner) const;

 private:
  std::array<std::uint8_t, 64> secretKey_{};
  SigningPublicKey publicKey_;
};

// The unsigned request for the connection's challenge.
[[nodiscard]] Bytes challengeRequest(std::int64_t id);

// A frame whose header can be written: ends the test program when it cannot.
[[nodiscard]] Bytes frameOf(const JsonObject& header, ByteView body = {});

}  // namespace torvane::test
