#include "platform/mac/mac_advertiser.h"

#import <QuartzCore/QuartzCore.h>

#include <mutex>
#include <utility>

#include "peer/peer_name.h"
#include "platform/mac/edge.h"
#include "platform/mac/invitation_valve.h"
#include "platform/mac/mac_peer_session.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

// Shared with answers that may come when the advertiser has gone.
struct GuardedValve {
  std::mutex mutex;
  InvitationValve valve;

  bool letIn(const std::optional<Bytes>& context) {
    const std::lock_guard lock(mutex);
    return valve.letIn(context, CACurrentMediaTime());
  }
  void endWaiting(const std::optional<Bytes>& context, bool wasAccepted) {
    const std::lock_guard lock(mutex);
    valve.endWaiting(context, wasAccepted);
  }
};

}  // namespace
}  // namespace torvane

@implementation TorvaneAdvertiserEvents {
  torvane::AdvertiserDelegate* _delegate;
  std::shared_ptr<torvane::PeerTokens> _tokens;
  std::shared_ptr<torvane::GuardedValve> _valve;
}

- (instancetype)initWithDelegate:(torvane::AdvertiserDelegate*)delegate
                          tokens:(std::shared_ptr<torvane::PeerTokens>)tokens {
  self = [super init];
  if (self != nil) {
    _delegate = delegate;
    _tokens = std::move(tokens);
    _valve = std::make_shared<torvane::GuardedValve>();
  }
  return self;
}

- (void)advertiser:(MCNearbyServiceAdvertiser*)advertiser
    didReceiveInvitationFromPeer:(MCPeerID*)peerID
                     withContext:(NSData*)context
               invitationHandler:(void (^)(BOOL accept, MCSession* session))invitationHandler {
  static_cast<void>(advertiser);
  torvane::atEdge([&] {
    std::optional<torvane::Bytes> key;
    if (context != nil) key = torvane::toBytes(context);
    // Strangers are numbered for good, so only those are that the valve lets in.
    const bool isNamed = torvane::isAcceptablePeerName(torvane::toText(peerID.displayName));
    const auto peer = isNamed && _valve->letIn(key) ? _tokens->identify(peerID) : std::nullopt;
    if (!peer) {
      invitationHandler(NO, nil);
      return;
    }
    void (^answer)(BOOL, MCSession*) = invitationHandler;  // copies it
    _delegate->advertiserDidReceiveInvitation(
        *peer, key,
        [answer, key, valve = _valve](bool accept,
                                      const std::shared_ptr<torvane::PeerSession>& session) {
          valve->endWaiting(key, accept);
          const auto into = std::static_pointer_cast<torvane::MacPeerSession>(session);
          answer(accept ? YES : NO, into ? into->session() : nil);
        });
  });
}

- (void)advertiser:(MCNearbyServiceAdvertiser*)advertiser
    didNotStartAdvertisingPeer:(NSError*)error {
  static_cast<void>(advertiser);
  torvane::atEdge(
      [&] { _delegate->advertiserDidNotStart(torvane::toText(error.localizedDescription)); });
}

@end

namespace torvane {

MacAdvertiser::MacAdvertiser(MCPeerID* peer, const std::string& serviceType,
                             std::shared_ptr<PeerTokens> tokens, AdvertiserDelegate& delegate)
    : events_([[TorvaneAdvertiserEvents alloc] initWithDelegate:&delegate
                                                         tokens:std::move(tokens)]),
      advertiser_([[MCNearbyServiceAdvertiser alloc] initWithPeer:peer
                                                    discoveryInfo:nil
                                                      serviceType:toNSString(serviceType)]) {
  advertiser_.delegate = events_;
}

MacAdvertiser::~MacAdvertiser() { advertiser_.delegate = nil; }

void MacAdvertiser::start() { [advertiser_ startAdvertisingPeer]; }

void MacAdvertiser::stop() { [advertiser_ stopAdvertisingPeer]; }

}  // namespace torvane
