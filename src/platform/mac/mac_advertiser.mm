#include "platform/mac/mac_advertiser.h"

#import <QuartzCore/QuartzCore.h>

#include <utility>

#include "peer/invitation_valve.h"
#include "peer/peer_name.h"
#include "platform/mac/edge.h"
#include "platform/mac/mac_peer_session.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

// An invitation that was let in. It is answered once: with a refusal when nobody holds it any more.
class OpenInvitation {
 public:
  using Answer = void (^)(BOOL accept, MCSession* session);

  OpenInvitation(InvitationValve::Waiting waiting, Answer answer)
      : waiting_(std::move(waiting)), answer_(answer) {}
  ~OpenInvitation() { answer(false, nil); }
  OpenInvitation(const OpenInvitation&) = delete;
  OpenInvitation& operator=(const OpenInvitation&) = delete;

  void answer(bool accept, MCSession* into) {
    const Answer last = std::exchange(answer_, nil);
    if (last == nil) return;
    waiting_.reset();
    last(accept ? YES : NO, into);
  }

 private:
  InvitationValve::Waiting waiting_;
  Answer answer_;
};

}  // namespace
}  // namespace torvane

@implementation TorvaneAdvertiserEvents {
  torvane::AdvertiserDelegate* _delegate;
  std::shared_ptr<torvane::PeerTokens> _tokens;
  std::shared_ptr<const torvane::RegisteredKeys> _registered;
  torvane::InvitationValve _valve;
}

- (instancetype)initWithDelegate:(torvane::AdvertiserDelegate*)delegate
                          tokens:(std::shared_ptr<torvane::PeerTokens>)tokens
                      registered:(std::shared_ptr<const torvane::RegisteredKeys>)registered {
  self = [super init];
  if (self != nil) {
    _delegate = delegate;
    _tokens = std::move(tokens);
    _registered = std::move(registered);
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
    // The framework does not tell where a peer comes from.
    const torvane::Inviter inviter = torvane::makeInviter(key, "", *_registered);
    // Strangers are numbered for good, so only those are that the valve lets in.
    const bool isNamed = torvane::shownPeerName(torvane::toText(peerID.displayName)).has_value();
    const auto waiting = isNamed ? _valve.letIn(inviter, CACurrentMediaTime()) : nullptr;
    const auto peer = waiting ? _tokens->identify(peerID) : std::nullopt;
    if (!peer) {
      invitationHandler(NO, nil);
      return;
    }
    const auto open = std::make_shared<torvane::OpenInvitation>(waiting, invitationHandler);
    _delegate->advertiserDidReceiveInvitation(
        {*peer, key}, [open](bool accept, const std::shared_ptr<torvane::PeerSession>& session) {
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
                             std::shared_ptr<PeerTokens> tokens,
                             std::shared_ptr<const RegisteredKeys> registered,
                             AdvertiserDelegate& delegate)
    : events_([[TorvaneAdvertiserEvents alloc] initWithDelegate:&delegate
                                                         tokens:std::move(tokens)
                                                     registered:std::move(registered)]),
      advertiser_([[MCNearbyServiceAdvertiser alloc] initWithPeer:peer
                                                    discoveryInfo:nil
                                                      serviceType:toNSString(serviceType)]) {
  advertiser_.delegate = events_;
}

MacAdvertiser::~MacAdvertiser() { advertiser_.delegate = nil; }

void MacAdvertiser::start() { [advertiser_ startAdvertisingPeer]; }

void MacAdvertiser::stop() { [advertiser_ stopAdvertisingPeer]; }

}  // namespace torvane
