#include "protocol/sha256.h"

namespace torvane {

Sha256Digest Sha256::digest() {
  Sha256Digest digest{};
  crypto_hash_sha256_final(&state_, digest.data());
  return digest;
}

std::string Sha256::hexadecimal() {
  const Sha256Digest bytes = digest();
  std::array<char, 2 * crypto_hash_sha256_BYTES + 1> text{};
  sodium_bin2hex(text.data(), text.size(), bytes.data(), bytes.size());
  return text.data();
}

}  // namespace torvane
