#include "peer/link_proof.h"

namespace torvane {
namespace {

constexpr std::string_view kPrefix1 = "torvane-peer-link-1";
constexpr std::string_view kPrefix2 = "torvane-peer-link-2";

void append(Bytes& message, ByteView part) {
  message.insert(message.end(), part.begin(), part.end());
}

}  // namespace

Bytes proofMessage(const LinkNonce& nonce, const CertificateHash& certificate,
                   const std::optional<PairingOffer>& offer) {
  Bytes message = toBytes(offer ? kPrefix2 : kPrefix1);
  append(message, nonce);
  append(message, certificate);
  if (offer) append(message, offer->commitment);
  if (offer) append(message, offer->deviceNonce);
  return message;
}

}  // namespace torvane
