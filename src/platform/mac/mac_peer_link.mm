#include "platform/mac/mac_peer_link.h"

#include "platform/mac/mac_advertiser.h"
#include "platform/mac/mac_peer_session.h"
#include "platform/mac/mac_text.h"
#include "protocol/utf8.h"

namespace torvane {
namespace {

constexpr std::size_t kLongestName = 63;  // bytes; the framework raises an exception for more

}  // namespace

PeerID MacPeerLink::makePeerID(const std::string& displayName) {
  const std::string name(utf8Prefix(displayName, kLongestName));
  MCPeerID* peer = [[MCPeerID alloc] initWithDisplayName:toNSString(name)];
  const PeerID known = tokens_->identify(peer);
  own_[known] = peer;
  return known;
}

std::shared_ptr<PeerSession> MacPeerLink::makeSession(const PeerID& self,
                                                      PeerSessionDelegate& delegate) {
  return MacPeerSession::make(own_.at(self), tokens_, delegate);
}

std::unique_ptr<Advertiser> MacPeerLink::makeAdvertiser(const PeerID& self,
                                                        const std::string& serviceType,
                                                        AdvertiserDelegate& delegate) {
  return std::make_unique<MacAdvertiser>(own_.at(self), serviceType, tokens_, delegate);
}

}  // namespace torvane
