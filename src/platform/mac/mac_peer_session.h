#pragma once

#import <MultipeerConnectivity/MultipeerConnectivity.h>

#include <cstdint>
#include <memory>

#include "peer/receive_budget.h"
#include "platform/mac/peer_tokens.h"
#include "ports/peer_session.h"

namespace torvane {
class MacPeerSession;
}

// Passes on what a session reports, on the framework's own queue, for as long as the session that
// it belongs to is wanted.
@interface TorvaneSessionEvents : NSObject <MCSessionDelegate>
- (instancetype)initForSession:(std::weak_ptr<torvane::MacPeerSession>)session;
@end

namespace torvane {

class MacPeerSession final : public PeerSession {
 public:
  // Both `peer` and what is sent through it are encrypted; nobody's identity is asked for.
  [[nodiscard]] static std::shared_ptr<MacPeerSession> make(MCPeerID* peer,
                                                            std::shared_ptr<PeerTokens> tokens,
                                                            std::shared_ptr<ReceiveBudget> budget,
                                                            PeerSessionDelegate& delegate);
  ~MacPeerSession() override;
  MacPeerSession(const MacPeerSession&) = delete;
  MacPeerSession& operator=(const MacPeerSession&) = delete;

  [[nodiscard]] std::vector<PeerID> connectedPeers() const override;
  [[nodiscard]] std::size_t longestMessage() const override { return SIZE_MAX; }
  void sendReliably(Bytes message, const Asker& to) override;
  void disconnect() override;

  [[nodiscard]] MCSession* session() const { return session_; }
  [[nodiscard]] PeerTokens& tokens() const { return *tokens_; }
  [[nodiscard]] ReceiveBudget& budget() const { return *budget_; }
  [[nodiscard]] PeerSessionDelegate& delegate() const { return delegate_; }

 private:
  MacPeerSession(MCPeerID* peer, std::shared_ptr<PeerTokens> tokens,
                 std::shared_ptr<ReceiveBudget> budget, PeerSessionDelegate& delegate);

  MCSession* session_;
  TorvaneSessionEvents* events_ = nil;  // the session itself does not keep it
  std::shared_ptr<PeerTokens> tokens_;
  std::shared_ptr<ReceiveBudget> budget_;
  PeerSessionDelegate& delegate_;
};

}  // namespace torvane
