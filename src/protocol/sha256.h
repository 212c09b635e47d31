#pragma once

#include <sodium.h>

#include <array>
#include <string>

#include "protocol/bytes.h"

namespace torvane {

using Sha256Digest = std::array<std::uint8_t, crypto_hash_sha256_BYTES>;

// SHA-256 of bytes that come in pieces. One of the two results ends the computation.
class Sha256 {
 public:
  Sha256() { crypto_hash_sha256_init(&state_); }

  void add(ByteView bytes) { crypto_hash_sha256_update(&state_, bytes.data(), bytes.size()); }

  [[nodiscard]] Sha256Digest digest();

  // 64 lowercase hexadecimal characters.
  [[nodiscard]] std::string hexadecimal();

 private:
  crypto_hash_sha256_state state_{};
};

}  // namespace torvane
