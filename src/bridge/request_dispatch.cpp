// From a received message to the route that answers it. Whatever fails a check is dropped without
// a word: the sender never learns why.
// Events: a message arrives. Fields read: session, peerKeys, challenges; receivedIDs and
// failedVerifications are filled in. Ports: Clock.

#include <cassert>

#include "app/bridge_delegate.h"
#include "protocol/p2p_authentication.h"

namespace torvane {
namespace {

// A connection may burn this much of our time with signatures that do not verify.
constexpr double kFailedVerificationBurst = 100;
constexpr double kFailedVerificationsPerSecond = 20;

}  // namespace

void BridgeDelegate::sessionDidReceive(std::shared_ptr<PeerSession> reporting, Bytes data,
                                       PeerID peer) {
  main_.async(
      [this, reporting = std::move(reporting), data = std::move(data), peer = std::move(peer)] {
        if (session && session == reporting) handleRequest(data, peer);
      });
}

void BridgeDelegate::handleRequest(ByteView data, const PeerID& peer) {
  assertMainThread();
  assert(session);
  const auto deviceKey = peerKeys.find(peer);
  if (deviceKey == peerKeys.end()) return;
  const auto key = SigningPublicKey::fromDeviceKey(deviceKey->second);
  if (!key) return;
  const auto frame = P2PFrame::decodeView(data);
  if (!frame) return;
  const auto id = integerMember(frame->header, "id");
  if (id && stringMember(frame->header, "path") == "/p2p/auth") {
    answerChallenge(*id, peer);
    return;
  }
  handleSignedRequest(*frame, peer, *key);
}

void BridgeDelegate::handleSignedRequest(const P2PFrame::View& envelope, const PeerID& peer,
                                         const SigningPublicKey& key) {
  const auto challenge = challenges.find(peer);
  if (challenge == challenges.end()) return;
  auto& failures =
      failedVerifications.try_emplace(peer, kFailedVerificationBurst, kFailedVerificationsPerSecond)
          .first->second;
  if (!failures.hasToken(platform_.clock.mediaTime())) return;
  auto verified = P2PAuthentication::verify(envelope, key, challenge->second, receivedIDs[peer]);
  if (!verified) {
    failures.take();
    return;
  }
  auto request = readPeerRequest(std::move(*verified));
  if (!request || !isValidURL(engineURL(request->path))) return;
  if (request->path == "/p2p/bridge-info") {
    answerBridgeInfo(request->id, peer);
    return;
  }
  forwardToEngine(std::move(*request), peer);
}

}  // namespace torvane
