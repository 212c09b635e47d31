#include "support/signing_device.h"

#include <sodium.h>

#include "protocol/base64.h"
#include "protocol/p2p_frame.h"

namespace torvane::test {
namespace {

std::array<std::uint8_t, SigningDevice::kSeedSize> filledWith(std::uint8_t byte) {
  std::array<std::uint8_t, SigningDevice::kSeedSize> seed;
  seed.fill(byte);
  return seed;
}

// The secret key begins with the seed and ends with the public key.
std::array<std::uint8_t, crypto_sign_SECRETKEYBYTES> secretKeyFrom(
    const std::array<std::uint8_t, SigningDevice::kSeedSize>& seed) {
  std::array<std::uint8_t, crypto_sign_PUBLICKEYBYTES> publicKey;
  std::array<std::uint8_t, crypto_sign_SECRETKEYBYTES> secretKey;
  crypto_sign_seed_keypair(publicKey.data(), secretKey.data(), seed.data());
  return secretKey;
}

}  // namespace

SigningDevice::SigningDevice(std::uint8_t seed) : SigningDevice(filledWith(seed)) {}

SigningDevice::SigningDevice(const std::array<std::uint8_t, kSeedSize>& seed)
    : secretKey_(secretKeyFrom(seed)), publicKey_(SigningPublicKey::fromRaw(rawKey()).value()) {}

Bytes SigningDevice::rawKey() const {
  return {secretKey_.begin() + kSeedSize, secretKey_.end()};
}

Bytes SigningDevice::sign(ByteView message) const {
  Bytes signature(crypto_sign_BYTES);
  crypto_sign_detached(signature.data(), nullptr, message.data(), message.size(),
                       secretKey_.data());
  return signature;
}

Bytes SigningDevice::envelope(std::string_view challenge, const JsonObject& header,
                              ByteView body) const {
  return envelopeAround(challenge, frameOf(header, body));
}

Bytes SigningDevice::envelopeAround(std::string_view challenge, ByteView inner) const {
  Bytes message = toBytes(challenge);
  message.insert(message.end(), inner.begin(), inner.end());
  return frameOf({{"signature", base64Encode(sign(message))}}, inner);
}

Bytes challengeRequest(std::int64_t id) {
  return frameOf({{"id", id}, {"path", "/p2p/auth"}});
}

Bytes frameOf(const JsonObject& header, ByteView body) {
  return P2PFrame::encode(header, body).value();
}

}  // namespace torvane::test
