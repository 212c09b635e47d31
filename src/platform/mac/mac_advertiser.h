#pragma once

#import <MultipeerConnectivity/MultipeerConnectivity.h>

#include <memory>
#include <string>

#include "platform/mac/peer_tokens.h"
#include "ports/peer_session.h"

// Passes on what the advertiser reports, on the framework's own queue.
@interface TorvaneAdvertiserEvents : NSObject <MCNearbyServiceAdvertiserDelegate>
// `delegate` outlives this object.
- (instancetype)initWithDelegate:(torvane::AdvertiserDelegate*)delegate
                          tokens:(std::shared_ptr<torvane::PeerTokens>)tokens
                      registered:(std::shared_ptr<const torvane::RegisteredKeys>)registered;
@end

namespace torvane {

// Advertises nothing but the service and the name.
class MacAdvertiser final : public Advertiser {
 public:
  MacAdvertiser(MCPeerID* peer, const std::string& serviceType, std::shared_ptr<PeerTokens> tokens,
                std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate);
  ~MacAdvertiser() override;
  MacAdvertiser(const MacAdvertiser&) = delete;
  MacAdvertiser& operator=(const MacAdvertiser&) = delete;

  void start() override;
  void stop() override;

 private:
  TorvaneAdvertiserEvents* events_;  // the advertiser itself does not keep it
  MCNearbyServiceAdvertiser* advertiser_;
};

}  // namespace torvane
