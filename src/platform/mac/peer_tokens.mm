#include "platform/mac/peer_tokens.h"

#include <utility>

#include "peer/peer_name.h"
#include "platform/mac/mac_text.h"

namespace torvane {

std::optional<PeerID> PeerTokens::identify(MCPeerID* peer) {
  auto name = shownPeerName(toText(peer.displayName));
  if (!name) return std::nullopt;
  return PeerID{number(peer), std::move(*name)};
}

PeerID PeerTokens::identifySelf(MCPeerID* self) { return {number(self), toText(self.displayName)}; }

std::uint64_t PeerTokens::number(MCPeerID* peer) {
  const std::lock_guard lock(mutex_);
  NSNumber* token = [tokens_ objectForKey:peer];
  if (token == nil) {
    token = [NSNumber numberWithUnsignedLongLong:tokens_.count + 1];
    [tokens_ setObject:token forKey:peer];
  }
  return token.unsignedLongLongValue;
}

}  // namespace torvane
