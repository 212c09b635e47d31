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
                                       Asker from) {
  const PeerID peer = from.peer;
  turns_.async(peer, [this, reporting = std::move(reporting), data = std::move(data),
                      from = std::move(from)] {
    if (session && session == reporting) handleRequest(data, from);
  });
}

void BridgeDelegate::handleRequest(ByteView data, const Asker& from) {
  assertMainThread();
  assert(session);
  const auto deviceKey = peerKeys.find(from.peer);
  if (deviceKey == peerKeys.end()) return;
  const auto key = SigningPublicKey::fromDeviceKey(deviceKey->second);
  if (!key) return;
  const auto frame = P2PFrame::decodeView(data);
  if (!frame) return;
  const auto id = integerMember(frame->header, "id");
  if (id && stringMember(frame->header, "path") == "/p2p/auth") {
    answerChallenge(*id, from);
    return;
  }
  handleSignedRequest(*frame, from, *key);
}

void BridgeDelegate::handleSignedRequest(const P2PFrame::View& envelope, const Asker& from,
                                         const SigningPublicKey& key) {
  const auto challenge = challenges.find(from.peer);
  if (challenge == challenges.end()) return;
  auto& failures =
      failedVerifications
          .try_emplace(from.peer, kFailedVerificationBurst, kFailedVerificationsPerSecond)
          .first->second;
  if (!failures.hasToken(platform_.clock.mediaTime())) return;
  auto verified =
      P2PAuthentication::verify(envelope, key, challenge->second, receivedIDs[from.peer]);
  if (!verified) {
    failures.take();
    return;
  }
  auto request = readPeerRequest(std::move(*verified));
  if (!request || !isValidURL(engineURL(request->path))) return;
  if (request->path == "/p2p/bridge-info") {
    answerBridgeInfo(request->id, from);
    return;
  }
  forwardToEngine(std::move(*request), from);
}

}  // namespace torvane
