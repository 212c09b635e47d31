#include "platform/linux/peer_link_invitation.h"

#include <sodium.h>

#include <algorithm>

#include "peer/masked_digits.h"
#include "peer/peer_name.h"
#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/json.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

// A base64 member: false when it is there but is not base64 text.
bool readBase64(const JsonObject& object, std::string_view key, std::optional<Bytes>& into) {
  if (!object.contains({key.data(), key.size()})) return true;
  const auto text = stringMember(object, key);
  if (text) into = base64Decode(*text);
  return into.has_value();
}

// None for what is not there or no nonce: in version 1 it is a member like any unknown one.
std::optional<LinkNonce> readNonce(const JsonObject& object) {
  const auto text = stringMember(object, "nonce");
  const auto bytes = text ? base64Decode(*text) : std::nullopt;
  LinkNonce nonce{};
  if (!bytes || bytes->size() != nonce.size()) return std::nullopt;
  std::ranges::copy(*bytes, nonce.begin());
  return nonce;
}

std::string written(const JsonObject& message) {
  return serializeJson(message).value_or("{}");
}

std::string_view refusalText(LinkRefusal reason) {
  switch (reason) {
    case LinkRefusal::declined:
      return "declined";
    case LinkRefusal::proof:
      return "proof";
    case LinkRefusal::name:
      return "name";
    case LinkRefusal::busy:
      return "busy";
    case LinkRefusal::protocol:
      break;
  }
  return "protocol";
}

}  // namespace

std::variant<PeerInvitation, LinkRefusal> readInvitation(std::string_view message) {
  const auto object = parseJsonObject(message);
  if (!object || stringMember(*object, "type") != "invite") return LinkRefusal::protocol;
  const auto name = stringMember(*object, "name");
  if (!name) return LinkRefusal::protocol;
  auto shown = shownPeerName(*name);
  if (!shown) return LinkRefusal::name;
  PeerInvitation invitation{withDigitsMasked(*shown), {}, {}, readNonce(*object)};
  if (!readBase64(*object, "context", invitation.context)) return LinkRefusal::protocol;
  if (!readBase64(*object, "signature", invitation.signature)) return LinkRefusal::protocol;
  if (invitation.signature && !invitation.context) return LinkRefusal::protocol;
  return invitation;
}

LinkGreeting newGreeting(LinkVersion version) {
  LinkGreeting greeting;
  randombytes_buf(greeting.nonce.data(), greeting.nonce.size());
  if (version == LinkVersion::one) return greeting;
  LinkNonce& pairing = greeting.pairingNonce.emplace();
  randombytes_buf(pairing.data(), pairing.size());
  return greeting;
}

bool isProven(const PeerInvitation& invitation, const LinkGreeting& greeting,
              const CertificateHash& certificate) {
  if (!invitation.context) return true;
  const auto key = SigningPublicKey::fromRaw(*invitation.context);
  if (!key || !invitation.signature) return false;
  std::optional<PairingOffer> offer;
  if (greeting.pairingNonce) {
    if (!invitation.nonce) return false;
    offer = {pairingCommitment(*greeting.pairingNonce), *invitation.nonce};
  }
  return key->isValidSignature(*invitation.signature,
                               proofMessage(greeting.nonce, certificate, offer));
}

std::optional<std::string> digitsOf(const PeerInvitation& invitation, const LinkGreeting& greeting,
                                    const CertificateHash& certificate) {
  if (!invitation.context || !invitation.nonce || !greeting.pairingNonce) return std::nullopt;
  return pairingDigits(
      {*invitation.context, certificate, *greeting.pairingNonce, *invitation.nonce});
}

std::string helloMessage(const std::string& name, const LinkGreeting& greeting) {
  JsonObject hello{{"type", "hello"},
                   {"version", greeting.pairingNonce ? 2 : 1},
                   {"name", isValidUtf8(name) ? name : std::string("Computer")},
                   {"nonce", base64Encode(greeting.nonce)}};
  if (greeting.pairingNonce) {
    hello["commitment"] = base64Encode(pairingCommitment(*greeting.pairingNonce));
  }
  return written(hello);
}

std::string waitingMessage(const LinkGreeting& greeting) {
  JsonObject waiting{{"type", "waiting"}};
  if (greeting.pairingNonce) waiting["opening"] = base64Encode(*greeting.pairingNonce);
  return written(waiting);
}

std::string acceptedMessage() {
  return written({{"type", "accepted"}});
}

std::string refusedMessage(LinkRefusal reason) {
  return written({{"type", "refused"}, {"reason", std::string(refusalText(reason))}});
}

}  // namespace torvane
