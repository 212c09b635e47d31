#pragma once

#include <optional>

#include "peer/pairing_digits.h"

namespace torvane {

// What version 2 of the link adds to a hello and to the invitation that answers it.
struct PairingOffer {
  Sha256Digest commitment{};  // of the computer's nonce
  LinkNonce deviceNonce{};
};

// What a device signs to prove that it holds its key (docs/peer-link.md): bound to this connection
// by the nonce of its hello, to the certificate that the device saw and, in version 2, to all that
// the digits are made of that is known by then. Without an offer it is version 1's.
[[nodiscard]] Bytes proofMessage(const LinkNonce& nonce, const CertificateHash& certificate,
                                 const std::optional<PairingOffer>& offer = std::nullopt);

}  // namespace torvane
