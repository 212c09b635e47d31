#include "protocol/sha256.h"

#include <array>

namespace torvane {

std::string Sha256::hexadecimal() {
  std::array<unsigned char, crypto_hash_sha256_BYTES> digest{};
  crypto_hash_sha256_final(&state_, digest.data());
  std::array<char, 2 * crypto_hash_sha256_BYTES + 1> text{};
  sodium_bin2hex(text.data(), text.size(), digest.data(), digest.size());
  return text.data();
}

}  // namespace torvane
