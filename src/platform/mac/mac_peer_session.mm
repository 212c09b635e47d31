#include "platform/mac/mac_peer_session.h"

#include "platform/mac/edge.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

constexpr NSUInteger kLongestMessage = NSUInteger{16} << 20;

static_assert(static_cast<NSInteger>(PeerState::notConnected) == MCSessionStateNotConnected);
static_assert(static_cast<NSInteger>(PeerState::connecting) == MCSessionStateConnecting);
static_assert(static_cast<NSInteger>(PeerState::connected) == MCSessionStateConnected);

}  // namespace
}  // namespace torvane

@implementation TorvaneSessionEvents {
  std::weak_ptr<torvane::MacPeerSession> _session;
}

- (instancetype)initForSession:(std::weak_ptr<torvane::MacPeerSession>)session {
  self = [super init];
  if (self != nil) _session = std::move(session);
  return self;
}

- (void)session:(MCSession*)session peer:(MCPeerID*)peerID didChangeState:(MCSessionState)state {
  static_cast<void>(session);
  torvane::atEdge([&] {
    const auto reporting = _session.lock();
    if (!reporting) return;
    if (const auto peer = reporting->tokens().identify(peerID)) {
      reporting->delegate().sessionPeerDidChange(reporting, *peer,
                                                 static_cast<torvane::PeerState>(state));
    }
  });
}

- (void)session:(MCSession*)session didReceiveData:(NSData*)data fromPeer:(MCPeerID*)peerID {
  static_cast<void>(session);
  torvane::atEdge([&] {
    const auto reporting = _session.lock();
    if (!reporting || data.length > torvane::kLongestMessage) return;
    const auto peer = reporting->tokens().identify(peerID);
    // The framework cannot be told to wait, so what is beyond the peer's share is lost.
    if (!peer || !reporting->budget().mayRead(peer->token)) return;
    auto lease = reporting->budget().hold(peer->token, data.length + torvane::kMessageOverhead);
    reporting->delegate().sessionDidReceive(reporting, torvane::toBytes(data),
                                            {*peer, std::move(lease)});
  });
}

// Streams and files have no meaning here.

- (void)session:(MCSession*)session
    didReceiveStream:(NSInputStream*)stream
            withName:(NSString*)streamName
            fromPeer:(MCPeerID*)peerID {
  static_cast<void>(session);
  static_cast<void>(streamName);
  static_cast<void>(peerID);
  [stream close];
}

- (void)session:(MCSession*)session
    didStartReceivingResourceWithName:(NSString*)resourceName
                             fromPeer:(MCPeerID*)peerID
                         withProgress:(NSProgress*)progress {
  static_cast<void>(session);
  static_cast<void>(resourceName);
  static_cast<void>(peerID);
  [progress cancel];
}

- (void)session:(MCSession*)session
    didFinishReceivingResourceWithName:(NSString*)resourceName
                              fromPeer:(MCPeerID*)peerID
                                 atURL:(NSURL*)localURL
                             withError:(NSError*)error {
  static_cast<void>(session);
  static_cast<void>(resourceName);
  static_cast<void>(peerID);
  static_cast<void>(localURL);
  static_cast<void>(error);
}

@end

namespace torvane {

MacPeerSession::MacPeerSession(MCPeerID* peer, std::shared_ptr<PeerTokens> tokens,
                               std::shared_ptr<ReceiveBudget> budget, PeerSessionDelegate& delegate)
    : session_([[MCSession alloc] initWithPeer:peer
                              securityIdentity:nil
                          encryptionPreference:MCEncryptionRequired]),
      tokens_(std::move(tokens)),
      budget_(std::move(budget)),
      delegate_(delegate) {}

std::shared_ptr<MacPeerSession> MacPeerSession::make(MCPeerID* peer,
                                                     std::shared_ptr<PeerTokens> tokens,
                                                     std::shared_ptr<ReceiveBudget> budget,
                                                     PeerSessionDelegate& delegate) {
  const std::shared_ptr<MacPeerSession> made(
      new MacPeerSession(peer, std::move(tokens), std::move(budget), delegate));
  made->events_ = [[TorvaneSessionEvents alloc] initForSession:made];
  made->session_.delegate = made->events_;
  return made;
}

// Whoever is still on their way in or out ends with the system's session, not before.
MacPeerSession::~MacPeerSession() { session_.delegate = nil; }

std::vector<PeerID> MacPeerSession::connectedPeers() const {
  std::vector<PeerID> peers;
  for (MCPeerID* connected in session_.connectedPeers) {
    if (auto peer = tokens_->identify(connected)) peers.push_back(std::move(*peer));
  }
  return peers;
}

void MacPeerSession::sendReliably(Bytes message, const Asker& to) {
  for (MCPeerID* connected in session_.connectedPeers) {
    if (tokens_->identify(connected) != to.peer) continue;
    [session_ sendData:toNSData(message)
               toPeers:@[ connected ]
              withMode:MCSessionSendDataReliable
                 error:nil];
    return;
  }
}

void MacPeerSession::disconnect() { [session_ disconnect]; }

}  // namespace torvane
