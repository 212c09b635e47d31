#include "platform/linux/peer_link_invitation.h"

#include "peer/peer_name.h"
#include "protocol/base64.h"
#include "protocol/device_key.h"
#include "protocol/json.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::string_view kProofPrefix = "torvane-peer-link-1";
constexpr std::int64_t kLinkVersion = 1;

// A base64 member: false when it is there but is not base64 text.
bool readBase64(const JsonObject& object, std::string_view key, std::optional<Bytes>& into) {
  if (!object.contains({key.data(), key.size()})) return true;
  const auto text = stringMember(object, key);
  if (text) into = base64Decode(*text);
  return into.has_value();
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
  PeerInvitation invitation{std::move(*shown), {}, {}};
  if (!readBase64(*object, "context", invitation.context)) return LinkRefusal::protocol;
  if (!readBase64(*object, "signature", invitation.signature)) return LinkRefusal::protocol;
  if (invitation.signature && !invitation.context) return LinkRefusal::protocol;
  return invitation;
}

Bytes proofMessage(const LinkNonce& nonce, const CertificateHash& certificate) {
  Bytes message = toBytes(kProofPrefix);
  message.insert(message.end(), nonce.begin(), nonce.end());
  message.insert(message.end(), certificate.begin(), certificate.end());
  return message;
}

bool isProven(const PeerInvitation& invitation, const LinkNonce& nonce,
              const CertificateHash& certificate) {
  if (!invitation.context) return true;
  const auto key = SigningPublicKey::fromRaw(*invitation.context);
  return key && invitation.signature &&
         key->isValidSignature(*invitation.signature, proofMessage(nonce, certificate));
}

std::string helloMessage(const std::string& name, const LinkNonce& nonce) {
  return written({{"type", "hello"},
                  {"version", kLinkVersion},
                  {"name", isValidUtf8(name) ? name : std::string("Computer")},
                  {"nonce", base64Encode(nonce)}});
}

std::string waitingMessage() {
  return written({{"type", "waiting"}});
}

std::string acceptedMessage() {
  return written({{"type", "accepted"}});
}

std::string refusedMessage(LinkRefusal reason) {
  return written({{"type", "refused"}, {"reason", std::string(refusalText(reason))}});
}

}  // namespace torvane
