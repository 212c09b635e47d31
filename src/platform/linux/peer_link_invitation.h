#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "protocol/bytes.h"

namespace torvane {

// The text messages that open a connection of the peer link. Pure functions, any thread.

inline constexpr std::size_t kLinkNonceSize = 32;
inline constexpr std::size_t kMaxControlMessage = 4096;

using LinkNonce = std::array<std::uint8_t, kLinkNonceSize>;
using CertificateHash = std::array<std::uint8_t, 32>;  // SHA-256 of the DER

enum class LinkRefusal { declined, proof, name, busy, protocol };

struct PeerInvitation {
  std::string name;                // as it is shown
  std::optional<Bytes> context;    // the inviter's raw public key
  std::optional<Bytes> signature;  // only with a context
};

// Checks the form and the name, not the proof.
[[nodiscard]] std::variant<PeerInvitation, LinkRefusal> readInvitation(std::string_view message);

// What the inviter signs: bound to this connection and to the certificate that it saw.
[[nodiscard]] Bytes proofMessage(const LinkNonce& nonce, const CertificateHash& certificate);

// True for an invitation without a context: there is nothing to prove.
[[nodiscard]] bool isProven(const PeerInvitation& invitation, const LinkNonce& nonce,
                            const CertificateHash& certificate);

[[nodiscard]] std::string helloMessage(const std::string& name, const LinkNonce& nonce);
[[nodiscard]] std::string waitingMessage();
[[nodiscard]] std::string acceptedMessage();
[[nodiscard]] std::string refusedMessage(LinkRefusal reason);

}  // namespace torvane
