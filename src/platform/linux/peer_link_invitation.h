#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "peer/link_proof.h"
#include "platform/linux/peer_link_http.h"

namespace torvane {

// The text messages that open a connection of the peer link. Pure functions, any thread.

inline constexpr std::size_t kMaxControlMessage = 4096;

enum class LinkRefusal { declined, proof, name, busy, protocol };

struct PeerInvitation {
  std::string name;                  // as it is shown
  std::optional<Bytes> context;      // the inviter's raw public key
  std::optional<Bytes> signature;    // only with a context
  std::optional<LinkNonce> nonce{};  // the inviter's, in version 2
};

// What one connection begins with. Nonces are used once.
struct LinkGreeting {
  LinkNonce nonce{};                        // for the proof
  std::optional<LinkNonce> pairingNonce{};  // in version 2; said after the invitation
};

// Checks the form and the name, not the proof.
[[nodiscard]] std::variant<PeerInvitation, LinkRefusal> readInvitation(std::string_view message);

[[nodiscard]] LinkGreeting newGreeting(LinkVersion version);

// True for an invitation without a context: there is nothing to prove.
[[nodiscard]] bool isProven(const PeerInvitation& invitation, const LinkGreeting& greeting,
                            const CertificateHash& certificate);

// What both ends show during the pairing; none in version 1 and without a context.
[[nodiscard]] std::optional<std::string> digitsOf(const PeerInvitation& invitation,
                                                  const LinkGreeting& greeting,
                                                  const CertificateHash& certificate);

[[nodiscard]] std::string helloMessage(const std::string& name, const LinkGreeting& greeting);
[[nodiscard]] std::string waitingMessage(const LinkGreeting& greeting);
[[nodiscard]] std::string acceptedMessage();
[[nodiscard]] std::string refusedMessage(LinkRefusal reason);

}  // namespace torvane
