#pragma once

#include <array>
#include <string>

#include "protocol/bytes.h"
#include "protocol/sha256.h"

namespace torvane {

// Six digits that both ends of a connection show while the user decides on a pairing. They are
// equal only where each end has the key and the certificate of the other, so somebody in the
// middle, who has to put his own in their places, is seen. (Numeric comparison, as in Bluetooth's
// Secure Simple Pairing: the computer commits itself to its nonce before it knows the device's, so
// that neither end, and nobody in the middle, can try nonces until the digits come out as wished.)

inline constexpr std::size_t kLinkNonceSize = 32;
using LinkNonce = std::array<std::uint8_t, kLinkNonceSize>;
using CertificateHash = Sha256Digest;  // of the DER

// What the computer says of its nonce before the device says its own, and opens afterwards.
[[nodiscard]] Sha256Digest pairingCommitment(const LinkNonce& computerNonce);

struct PairingExchange {
  Bytes deviceKey;  // raw, 32 bytes
  CertificateHash certificate{};
  LinkNonce computerNonce{};  // the one that was committed to
  LinkNonce deviceNonce{};
};

// Six digits in two groups, such as "482 913".
[[nodiscard]] std::string pairingDigits(const PairingExchange& exchange);

// A name as the question shows it, the digits behind it: “iPad · 482 913”. Behind a name that is
// written from the right a mark keeps the two groups from changing places on the screen.
[[nodiscard]] std::string nameWithDigits(const std::string& name, const std::string& digits);

}  // namespace torvane
