#include "platform/mac/mac_peer_link.h"

#include "peer/peer_name.h"
#include "platform/mac/mac_advertiser.h"
#include "platform/mac/mac_peer_session.h"
#include "platform/mac/mac_text.h"
#include "protocol/utf8.h"

namespace torvane {

PeerID MacPeerLink::makePeerID(const std::string& displayName) {
  // The framework raises an exception for a longer one.
  const std::string name(utf8Prefix(displayName, kMaxPeerName));
  MCPeerID* peer = [[MCPeerID alloc] initWithDisplayName:toNSString(name)];
  const PeerID known = tokens_->identifySelf(peer);
  own_[known] = peer;
  return known;
}

std::shared_ptr<PeerSession> MacPeerLink::makeSession(const PeerID& self,
                                                      PeerSessionDelegate& delegate) {
  return MacPeerSession::make(own_.at(self), tokens_, budget_, delegate);
}

std::unique_ptr<Advertiser> MacPeerLink::makeAdvertiser(
    const PeerID& self, const std::string& serviceType,
    std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate) {
  return std::make_unique<MacAdvertiser>(own_.at(self), serviceType, tokens_, std::move(registered),
                                         delegate);
}

}  // namespace torvane
