#include "protocol/p2p_authentication.h"

#include "protocol/base64.h"

namespace torvane::P2PAuthentication {
namespace {

// 64 bytes in base64 with its padding. Any other text is refused by its length, before it costs
// anything to read.
constexpr std::size_t kSignatureText = 88;

}  // namespace

std::optional<P2PFrame::Frame> verify(ByteView envelope, const SigningPublicKey& key,
                                      std::string_view challenge, ReceivedIDs& receivedIDs) {
  const auto outer = P2PFrame::decodeView(envelope);
  return outer ? verify(*outer, key, challenge, receivedIDs) : std::nullopt;
}

std::optional<P2PFrame::Frame> verify(const P2PFrame::View& envelope, const SigningPublicKey& key,
                                      std::string_view challenge, ReceivedIDs& receivedIDs) {
  const auto signatureText = stringMember(envelope.header, "signature");
  if (!signatureText || signatureText->size() != kSignatureText) return std::nullopt;
  const auto signature = base64Decode(*signatureText);
  if (!signature) return std::nullopt;

  Bytes message;
  message.reserve(challenge.size() + envelope.body.size());
  message.insert(message.end(), challenge.begin(), challenge.end());
  message.insert(message.end(), envelope.body.begin(), envelope.body.end());
  if (!key.isValidSignature(*signature, message)) return std::nullopt;

  auto inner = P2PFrame::decode(envelope.body);
  if (!inner) return std::nullopt;
  const auto id = integerMember(inner->header, "id");
  if (!id || !receivedIDs.insert(*id)) return std::nullopt;
  return inner;
}

}  // namespace torvane::P2PAuthentication
