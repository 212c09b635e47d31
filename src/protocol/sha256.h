#pragma once

#include <sodium.h>

#include <string>

#include "protocol/bytes.h"

namespace torvane {

// SHA-256 of bytes that come in pieces.
class Sha256 {
 public:
  Sha256() { crypto_hash_sha256_init(&state_); }

  void add(ByteView bytes) { crypto_hash_sha256_update(&state_, bytes.data(), bytes.size()); }

  // 64 lowercase hexadecimal characters; ends the computation.
  [[nodiscard]] std::string hexadecimal();

 private:
  crypto_hash_sha256_state state_{};
};

}  // namespace torvane
