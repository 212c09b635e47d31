// Where the system calls the program: no exception may come out there, and nothing may be gone.

#include "mac/on_a_mac.h"
#include "platform/mac/application_delegate.h"
#include "platform/mac/mac_main_queue.h"
#include "platform/mac/mac_overlay_surface.h"
#include "platform/mac/mac_peer_link.h"
#include "platform/mac/mac_peer_session.h"
#include "platform/mac/mac_status_item.h"

namespace torvane {
namespace {

using fake::system;

// Whatever it is told, it throws.
struct Thrower final : PeerSessionDelegate, AdvertiserDelegate, MenuDelegate, Clock {
  [[noreturn]] void sessionPeerDidChange(std::shared_ptr<PeerSession>, PeerID, PeerState) override {
    throw std::runtime_error("state");
  }
  [[noreturn]] void sessionDidReceive(std::shared_ptr<PeerSession>, Bytes, Asker) override {
    throw std::runtime_error("data");
  }
  [[noreturn]] void advertiserDidNotStart(std::string) override {
    throw std::runtime_error("start");
  }
  [[noreturn]] void advertiserDidRecover() override { throw std::runtime_error("recovery"); }
  [[noreturn]] void advertiserDidReceiveInvitation(Invitation, InvitationHandler) override {
    throw std::runtime_error("invitation");
  }
  [[noreturn]] std::vector<MenuItem> menuNeedsUpdate() override { throw std::bad_alloc(); }
  [[noreturn]] double unixTime() const override { throw 1; }
  [[noreturn]] double mediaTime() const override { throw 1; }
};

class MacEdges : public OnAMac {
 protected:
  // How many exceptions have been stopped and written down.
  static std::size_t stopped() {
    return timesSaid("NSLog Torvane P2P Helper: %s") +
           timesSaid("NSLog Torvane P2P Helper: an exception of unknown type");
  }
  static MCPeerID* pad() { return [[MCPeerID alloc] initWithDisplayName:@"iPad"]; }

  Thrower thrower_;
};

TEST_F(MacEdges, StopExceptionsOfTheSession) {
  MacPeerLink link;
  const auto session = link.makeSession(link.makePeerID("Mac"), thrower_);
  MCSession* made = system().sessions[0];
  [made.delegate session:made peer:pad() didChangeState:MCSessionStateConnected];
  [made.delegate session:made didReceiveData:[NSData dataWithBytes:"x" length:1] fromPeer:pad()];
  EXPECT_EQ(stopped(), 2U);
}

TEST_F(MacEdges, StopExceptionsOfTheAdvertiser) {
  MacPeerLink link;
  const auto advertiser = link.makeAdvertiser(link.makePeerID("Mac"), "torvane",
                                              std::make_shared<RegisteredKeys>(), thrower_);
  MCNearbyServiceAdvertiser* made = system().advertiser;
  [made.delegate advertiser:made didNotStartAdvertisingPeer:fake::error("no")];
  __block int refusals = 0;
  for (int i = 0; i < 5; ++i) {
    [made.delegate advertiser:made
        didReceiveInvitationFromPeer:pad()
                         withContext:nil
                   invitationHandler:^(BOOL accept, MCSession*) {
                     refusals += accept ? 0 : 1;
                   }];
  }
  EXPECT_EQ(stopped(), 6U);
  EXPECT_EQ(refusals, 5);  // nobody waits for an answer for ever
}

TEST_F(MacEdges, StopExceptionsOfTheMenu) {
  MacStatusItem item;
  item.setMenu(thrower_);
  NSMenu* menu = system().statusItem.menu;
  [menu.delegate menuNeedsUpdate:menu];
  EXPECT_EQ(stopped(), 1U);
}

TEST_F(MacEdges, StopExceptionsOfQueuedWorkAndTimers) {
  MacMainQueue queue;
  int ran = 0;
  queue.async([] { throw std::runtime_error("work"); });
  queue.after(1, [] { throw 1; });
  queue.every(1, [&] {
    ++ran;
    throw std::bad_alloc();
  });
  queue.async([&] { ++ran; });
  fake::advance(3.5);
  EXPECT_EQ(ran, 4);  // nothing else is held up
  EXPECT_EQ(stopped(), 5U);
}

TEST_F(MacEdges, LeaveWhatCanWaitForTheNextTimer) {
  MacMainQueue queue;
  std::vector<std::string> log;
  queue.asyncWhenAwake([&] { log.emplace_back("first"); });
  queue.after(1, [&] { log.emplace_back("timer"); });
  fake::advance(0.9);
  EXPECT_TRUE(log.empty());
  fake::advance(0.2);
  EXPECT_EQ(log, (std::vector<std::string>{"first", "timer"}));
}

TEST_F(MacEdges, StopExceptionsOfTheDrawing) {
  OverlayView view;
  MacOverlaySurface surface({0, 0, 100, 100}, view, thrower_);
  surface.orderFrontRegardless();
  EXPECT_EQ(stopped(), 1U);
  EXPECT_EQ(timesSaid("to the screen"), 0U);
}

TEST_F(MacEdges, EndWithNothingLeftToCall) {
  id<MCSessionDelegate> sessionEvents;
  NSView* view;
  MCSession* made;
  OverlayView content;
  {
    MacPeerLink link;
    const auto session = link.makeSession(link.makePeerID("Mac"), thrower_);
    made = system().sessions[0];
    sessionEvents = made.delegate;
    MacOverlaySurface surface({0, 0, 100, 100}, content, thrower_);
    view = system().windows[0].contentView;
  }
  EXPECT_EQ(made.delegate, nil);
  [sessionEvents session:made peer:pad() didChangeState:MCSessionStateConnected];
  [view drawRect:view.bounds];
  EXPECT_EQ(stopped(), 0U);
}

TEST_F(MacEdges, KeepWhatTheFrameworksDoNot) {
  MacPeerLink link;
  MacStatusItem item;
  std::shared_ptr<PeerSession> session;
  std::unique_ptr<Advertiser> advertiser;
  @autoreleasepool {
    const PeerID self = link.makePeerID("Mac");
    session = link.makeSession(self, thrower_);
    advertiser = link.makeAdvertiser(self, "torvane", std::make_shared<RegisteredKeys>(), thrower_);
    item.setMenu(thrower_);
  }
  @autoreleasepool {
    EXPECT_NE(system().sessions[0].delegate, nil);
    EXPECT_NE(system().advertiser.delegate, nil);
    EXPECT_NE(system().statusItem.menu.delegate, nil);
  }
}

}  // namespace
}  // namespace torvane
