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

// An invitation that was let in. It is answered once: with a refusal when nobody holds it any more.
class OpenInvitation {
 public:
  using Answer = void (^)(BOOL accept, MCSession* session);

  OpenInvitation(std::optional<Bytes> context, std::shared_ptr<GuardedValve> valve, Answer answer)
      : context_(std::move(context)), valve_(std::move(valve)), answer_(answer) {}
  ~OpenInvitation() { answer(false, nil); }
  OpenInvitation(const OpenInvitation&) = delete;
  OpenInvitation& operator=(const OpenInvitation&) = delete;

  void answer(bool accept, MCSession* into) {
    const Answer last = std::exchange(answer_, nil);
    if (last == nil) return;
    valve_->endWaiting(context_, accept);
    last(accept ? YES : NO, into);
  }

 private:
  std::optional<Bytes> context_;
  std::shared_ptr<GuardedValve> valve_;
  Answer answer_;
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
    const auto open = std::make_shared<torvane::OpenInvitation>(key, _valve, invitationHandler);
    _delegate->advertiserDidReceiveInvitation(
        *peer, key, [open](bool accept, const std::shared_ptr<torvane::PeerSession>& session) {
          const auto into = std::static_pointer_cast<torvane::MacPeerSession>(session);
          open->answer(accept, into ? into->session() : nil);
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
