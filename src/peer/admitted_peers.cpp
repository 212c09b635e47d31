#include "peer/admitted_peers.h"

#include "protocol/p2p_authentication.h"
#include "protocol/uuid.h"

namespace torvane {

void AdmittedPeers::admit(const PeerID& peer, const SigningPublicKey& key) {
  const auto [record, isNew] = peers_.try_emplace(peer, Record{.key = key});
  if (!isNew) record->second.key = key;
}

void AdmittedPeers::drop(const PeerID& peer) {
  peers_.erase(peer);
}

std::optional<std::string> AdmittedPeers::issueChallenge(const PeerID& peer) {
  const auto found = peers_.find(peer);
  if (found == peers_.end()) return std::nullopt;
  auto& challenge = found->second.challenge;
  if (challenge.empty()) challenge = randomUUID();
  return challenge;
}

std::optional<P2PFrame::Frame> AdmittedPeers::verify(const P2PFrame::View& envelope,
                                                     const PeerID& peer, double now) {
  const auto found = peers_.find(peer);
  if (found == peers_.end() || found->second.challenge.empty()) return std::nullopt;
  Record& record = found->second;
  if (!record.failedVerifications.hasToken(now)) return std::nullopt;
  auto verified =
      P2PAuthentication::verify(envelope, record.key, record.challenge, record.receivedIDs);
  if (!verified) record.failedVerifications.take();
  return verified;
}

}  // namespace torvane
