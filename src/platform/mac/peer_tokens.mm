#include "platform/mac/peer_tokens.h"

#include "platform/mac/mac_text.h"

namespace torvane {

PeerID PeerTokens::identify(MCPeerID* peer) {
  const std::lock_guard lock(mutex_);
  NSNumber* token = [tokens_ objectForKey:peer];
  if (token == nil) {
    token = [NSNumber numberWithUnsignedLongLong:tokens_.count + 1];
    [tokens_ setObject:token forKey:peer];
  }
  return {token.unsignedLongLongValue, toText(peer.displayName)};
}

}  // namespace torvane
