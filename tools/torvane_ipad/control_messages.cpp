#include "torvane_ipad/control_messages.h"

#include <algorithm>

#include "protocol/base64.h"
#include "protocol/json.h"

namespace torvane::ipad {
namespace {

// A nonce or a hash: 32 bytes in base64.
std::optional<LinkNonce> nonceMember(const JsonObject& message, std::string_view key) {
  const auto text = stringMember(message, key);
  const auto bytes = text ? base64Decode(*text) : std::nullopt;
  LinkNonce nonce{};
  if (!bytes || bytes->size() != nonce.size()) return std::nullopt;
  std::ranges::copy(*bytes, nonce.begin());
  return nonce;
}

std::optional<ControlMessage> parseHello(const JsonObject& message) {
  const auto version = integerMember(message, "version");
  const auto name = stringMember(message, "name");
  const auto nonce = nonceMember(message, "nonce");
  if (!version || !name || !nonce) return std::nullopt;
  if (*version != kLinkVersion) return Hello{*version, *name, *nonce, {}};
  const auto commitment = nonceMember(message, "commitment");
  if (!commitment) return std::nullopt;
  return Hello{*version, *name, *nonce, *commitment};
}

std::optional<ControlMessage> parseWaiting(const JsonObject& message) {
  const auto opening = nonceMember(message, "opening");
  if (!opening) return std::nullopt;
  return Waiting{*opening};
}

}  // namespace

std::optional<ControlMessage> parseControl(std::string_view text) {
  if (text.size() > kMostControlSize) return std::nullopt;
  const auto message = parseJsonObject(text);
  if (!message) return std::nullopt;
  const auto type = stringMember(*message, "type");
  if (type == "hello") return parseHello(*message);
  if (type == "waiting") return parseWaiting(*message);
  if (type == "accepted") return Accepted{};
  if (type == "refused") return Refused{stringMember(*message, "reason").value_or("no reason")};
  return std::nullopt;
}

std::optional<std::string> makeInvite(const DeviceIdentity& identity, const std::string& name,
                                      const Hello& hello, const LinkNonce& deviceNonce,
                                      const CertificateHash& certificate) {
  const Bytes signature = identity.sign(
      proofMessage(hello.nonce, certificate, PairingOffer{hello.commitment, deviceNonce}));
  return serializeJson({{"type", "invite"},
                        {"name", name},
                        {"context", base64Encode(identity.publicKey())},
                        {"nonce", base64Encode(deviceNonce)},
                        {"signature", base64Encode(signature)}});
}

}  // namespace torvane::ipad
