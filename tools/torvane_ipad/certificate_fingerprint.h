#pragma once

#include <openssl/ssl.h>
#include <sodium.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace torvane::ipad {

// The SHA-256 of a certificate as it goes over the wire (DER).
using Fingerprint = std::array<std::uint8_t, crypto_hash_sha256_BYTES>;

// None when the other side showed no certificate.
[[nodiscard]] std::optional<Fingerprint> peerFingerprint(SSL* tls);

// 64 lower-case hexadecimal digits.
[[nodiscard]] std::string hexText(const Fingerprint& fingerprint);

}  // namespace torvane::ipad
