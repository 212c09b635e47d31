#pragma once

#import <MultipeerConnectivity/MultipeerConnectivity.h>

#include <map>
#include <memory>

#include "peer/receive_budget.h"
#include "platform/mac/peer_tokens.h"
#include "ports/peer_session.h"

namespace torvane {

class MacPeerLink final : public PeerLink {
 public:
  [[nodiscard]] PeerID makePeerID(const std::string& displayName) override;
  [[nodiscard]] std::shared_ptr<PeerSession> makeSession(const PeerID& self,
                                                         PeerSessionDelegate& delegate) override;
  [[nodiscard]] std::unique_ptr<Advertiser> makeAdvertiser(
      const PeerID& self, const std::string& serviceType,
      std::shared_ptr<const RegisteredKeys> registered, AdvertiserDelegate& delegate) override;
  [[nodiscard]] std::vector<std::string> addresses() const override { return {}; }

 private:
  std::shared_ptr<PeerTokens> tokens_ = std::make_shared<PeerTokens>();
  std::shared_ptr<ReceiveBudget> budget_ = std::make_shared<ReceiveBudget>(ReceiveShares{}, [] {});
  std::map<PeerID, MCPeerID*> own_;
};

}  // namespace torvane
