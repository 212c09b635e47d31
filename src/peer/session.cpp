// The one current session and the advertiser.
// Events: a peer's state changes, advertising fails or works after all. Fields: peerID, session,
// advertiser, connectedPeers, advertiseError. Ports: PeerLink, PeerSession, Advertiser.

#include "app/bridge_delegate.h"
#include "protocol/constants.h"

namespace torvane {

void BridgeDelegate::openSession() {
  session = platform_.peerLink.makeSession(peerID, *this);
}

void BridgeDelegate::startAdvertising() {
  advertiser = platform_.peerLink.makeAdvertiser(peerID, SERVICE_TYPE, registeredKeys, *this);
  advertiser->start();
}

void BridgeDelegate::sessionPeerDidChange(std::shared_ptr<PeerSession> reporting, PeerID peer,
                                          PeerState state) {
  // Behind what the peer has sent before.
  turns_.async(peer, [this, reporting = std::move(reporting), peer, state] {
    peerDidChange(*reporting, peer, state);
  });
}

void BridgeDelegate::peerDidChange(PeerSession& reporting, const PeerID& peer, PeerState state) {
  assertMainThread();
  if (session.get() != &reporting) return;  // a session that has been replaced
  if (state == PeerState::notConnected) {
    dropPeer(peer);
    if (peerKeys.empty() && reporting.connectedPeers().empty()) openSession();
  }
  connectedPeers.clear();
  for (const auto& connected : reporting.connectedPeers()) {
    connectedPeers.push_back(connected.displayName);
  }
  updateIcon();
}

void BridgeDelegate::advertiserDidNotStart(std::string error) {
  main_.async([this, error = std::move(error)] {
    advertiseError = error;
    updateIcon();
  });
}

void BridgeDelegate::advertiserDidRecover() {
  main_.async([this] {
    advertiseError.reset();
    updateIcon();
  });
}

}  // namespace torvane
