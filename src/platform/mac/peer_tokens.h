#pragma once

#import <MultipeerConnectivity/MultipeerConnectivity.h>

#include <mutex>

#include "peer/peer_session.h"

namespace torvane {

// Gives each of the framework's peer identifiers a number, the same to equal ones for the life of
// the process: they are kept, so that none can come back as another. Any thread.
class PeerTokens {
 public:
  [[nodiscard]] PeerID identify(MCPeerID* peer);

 private:
  std::mutex mutex_;
  NSMutableDictionary<MCPeerID*, NSNumber*>* tokens_ = [NSMutableDictionary dictionary];
};

}  // namespace torvane
