#include "torvane_ipad/control_messages.h"

#include "protocol/base64.h"
#include "protocol/json.h"

namespace torvane::ipad {
namespace {

constexpr std::string_view kProofDomain = "torvane-peer-link-1";
constexpr std::size_t kNonceSize = 32;

std::optional<ControlMessage> parseHello(const JsonObject& message) {
  const auto version = integerMember(message, "version");
  const auto name = stringMember(message, "name");
  const auto nonceText = stringMember(message, "nonce");
  auto nonce = nonceText ? base64Decode(*nonceText) : std::nullopt;
  if (!version || !name || !nonce || nonce->size() != kNonceSize) return std::nullopt;
  return Hello{*version, *name, std::move(*nonce)};
}

Bytes proofMessage(ByteView nonce, ByteView fingerprint) {
  Bytes message = toBytes(kProofDomain);
  message.insert(message.end(), nonce.begin(), nonce.end());
  message.insert(message.end(), fingerprint.begin(), fingerprint.end());
  return message;
}

}  // namespace

std::optional<ControlMessage> parseControl(std::string_view text) {
  if (text.size() > kMostControlSize) return std::nullopt;
  const auto message = parseJsonObject(text);
  if (!message) return std::nullopt;
  const auto type = stringMember(*message, "type");
  if (type == "hello") return parseHello(*message);
  if (type == "waiting") return Waiting{};
  if (type == "accepted") return Accepted{};
  if (type == "refused") return Refused{stringMember(*message, "reason").value_or("no reason")};
  return std::nullopt;
}

std::optional<std::string> makeInvite(const DeviceIdentity& identity, const std::string& name,
                                      ByteView nonce, ByteView fingerprint) {
  const Bytes signature = identity.sign(proofMessage(nonce, fingerprint));
  return serializeJson({{"type", "invite"},
                        {"name", name},
                        {"context", base64Encode(identity.publicKey())},
                        {"signature", base64Encode(signature)}});
}

}  // namespace torvane::ipad
