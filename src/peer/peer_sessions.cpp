#include "peer/peer_sessions.h"

#include <cassert>

#include "protocol/constants.h"

namespace torvane {

void PeerSessions::open(PeerSessionDelegate& delegate) {
  delegate_ = &delegate;
  makeSession();
}

void PeerSessions::makeSession() {
  session = link_.makeSession(peerID, *delegate_);
}

void PeerSessions::startAdvertising(std::shared_ptr<const RegisteredKeys> registered,
                                    AdvertiserDelegate& delegate) {
  advertiser = link_.makeAdvertiser(peerID, SERVICE_TYPE, std::move(registered), delegate);
  advertiser->start();
}

void PeerSessions::close() {
  assert(advertiser && session);  // made at launch, never given up
  advertiser->stop();
  session->disconnect();
}

void PeerSessions::peerDidChange(PeerSession& reporting, const PeerID& peer, PeerState state) {
  if (session.get() != &reporting) return;  // a session that has been replaced
  if (state == PeerState::notConnected) {
    admitted_.drop(peer);
    if (admitted_.isEmpty() && reporting.connectedPeers().empty()) makeSession();
  }
  connectedPeers.clear();
  for (const auto& connected : reporting.connectedPeers()) {
    connectedPeers.push_back(connected.displayName);
  }
  host_.linkDidChange();
}

void PeerSessions::advertisingDidChange(std::optional<std::string> error) {
  advertiseError = std::move(error);
  host_.linkDidChange();
}

}  // namespace torvane
