#include "protocol/device_key.h"

#include <sodium.h>

#include <algorithm>

#include "protocol/base64.h"

namespace torvane {

std::optional<SigningPublicKey> SigningPublicKey::fromRaw(ByteView raw) {
  if (raw.size() != kRawSize) return std::nullopt;
  SigningPublicKey key;
  std::copy(raw.begin(), raw.end(), key.raw_.begin());
  return key;
}

std::optional<SigningPublicKey> SigningPublicKey::fromDeviceKey(std::string_view deviceKey) {
  const auto raw = base64Decode(deviceKey);
  return raw ? fromRaw(*raw) : std::nullopt;
}

std::string SigningPublicKey::deviceKey() const {
  return base64Encode(raw_);
}

bool SigningPublicKey::isValidSignature(ByteView signature, ByteView message) const {
  if (signature.size() != crypto_sign_BYTES) return false;
  return crypto_sign_verify_detached(signature.data(), message.data(), message.size(),
                                     raw_.data()) == 0;
}

}  // namespace torvane
