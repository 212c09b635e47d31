#include "platform/mac/peer_tokens.h"

#include "peer/peer_name.h"
#include "platform/mac/mac_text.h"

namespace torvane {

std::optional<PeerID> PeerTokens::identify(MCPeerID* peer) {
  if (!isAcceptablePeerName(toText(peer.displayName))) return std::nullopt;
  return identifySelf(peer);
}

PeerID PeerTokens::identifySelf(MCPeerID* self) {
  const std::lock_guard lock(mutex_);
  NSNumber* token = [tokens_ objectForKey:self];
  if (token == nil) {
    token = [NSNumber numberWithUnsignedLongLong:tokens_.count + 1];
    [tokens_ setObject:token forKey:self];
  }
  return {token.unsignedLongLongValue, toText(self.displayName)};
}

}  // namespace torvane
