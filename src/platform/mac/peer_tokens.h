#pragma once

#import <MultipeerConnectivity/MultipeerConnectivity.h>

#include <cstdint>
#include <mutex>
#include <optional>

#include "ports/peer_session.h"

namespace torvane {

// Gives each of the framework's peer identifiers a number, the same to equal ones for the life of
// the process: they are kept, so that none can come back as another. Any thread.
class PeerTokens {
 public:
  // With the name that is shown; none for a peer whose name may not be: it does not reach the
  // program.
  [[nodiscard]] std::optional<PeerID> identify(MCPeerID* peer);

  // This computer's own identifier, whatever its name.
  [[nodiscard]] PeerID identifySelf(MCPeerID* self);

 private:
  [[nodiscard]] std::uint64_t number(MCPeerID* peer);

  std::mutex mutex_;
  NSMutableDictionary<MCPeerID*, NSNumber*>* tokens_ = [NSMutableDictionary dictionary];
};

}  // namespace torvane
