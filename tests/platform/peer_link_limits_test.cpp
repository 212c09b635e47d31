#include "platform/linux/peer_link_limits.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr LinkTime kStart{};

TEST(PeerLinkLimits, CapsStrangersInAllAndPerAddress) {
  PeerLinkLimits limits({.strangers = 3, .strangersPerAddress = 2});
  EXPECT_TRUE(limits.admitStranger("a"));
  EXPECT_TRUE(limits.admitStranger("a"));
  EXPECT_FALSE(limits.admitStranger("a"));
  EXPECT_TRUE(limits.admitStranger("b"));
  EXPECT_FALSE(limits.admitStranger("c"));
  limits.strangerLeft("a");
  EXPECT_TRUE(limits.admitStranger("c"));
  EXPECT_FALSE(limits.admitStranger("a"));
}

TEST(PeerLinkLimits, CapsWaitingInvitations) {
  PeerLinkLimits limits({.waiting = 2});
  EXPECT_TRUE(limits.beginWaiting());
  EXPECT_TRUE(limits.beginWaiting());
  EXPECT_FALSE(limits.beginWaiting());
  limits.endWaiting();
  EXPECT_TRUE(limits.beginWaiting());
}

TEST(PeerLinkLimits, LetsNobodyWaitWhenAllPlacesAreTaken) {
  PeerLinkLimits limits({.connected = 1});
  limits.beginConnected();
  EXPECT_FALSE(limits.beginWaiting());
  limits.endConnected();
  EXPECT_TRUE(limits.beginWaiting());
}

TEST(PeerLinkLimits, LetsSoManyNewInvitationsThroughInAnyMinute) {
  PeerLinkLimits limits({.invitationsPerMinute = 2});
  EXPECT_TRUE(limits.letInvitationThrough(Bytes{1}, kStart));
  EXPECT_TRUE(limits.letInvitationThrough(std::nullopt, kStart + seconds(30)));
  EXPECT_FALSE(limits.letInvitationThrough(Bytes{3}, kStart + seconds(59)));
  EXPECT_TRUE(limits.letInvitationThrough(Bytes{3}, kStart + seconds(60)));
  EXPECT_FALSE(limits.letInvitationThrough(Bytes{4}, kStart + seconds(89)));
  EXPECT_TRUE(limits.letInvitationThrough(Bytes{4}, kStart + seconds(90)));
}

TEST(PeerLinkLimits, LetsAcceptedKeysThroughUncounted) {
  PeerLinkLimits limits({.invitationsPerMinute = 1});
  limits.wasAccepted({1});
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(limits.letInvitationThrough(Bytes{1}, kStart));
  EXPECT_TRUE(limits.letInvitationThrough(Bytes{2}, kStart));
  EXPECT_FALSE(limits.letInvitationThrough(Bytes{2}, kStart));
}

TEST(PeerLinkLimits, FailedProofsCloseAnAddressForAWhile) {
  PeerLinkLimits limits({.failedProofsPerMinute = 2});
  limits.proofFailed("a", kStart);
  EXPECT_TRUE(limits.mayProve("a", kStart));
  limits.proofFailed("a", kStart + seconds(10));
  EXPECT_FALSE(limits.mayProve("a", kStart + seconds(59)));
  EXPECT_TRUE(limits.mayProve("b", kStart + seconds(59)));
  EXPECT_TRUE(limits.mayProve("a", kStart + seconds(60)));
}

TEST(PeerLinkLimits, RemembersABoundedNumberOfAddresses) {
  PeerLinkLimits limits({.failedProofsPerMinute = 1});
  for (int i = 0; i < 5000; ++i) limits.proofFailed(std::to_string(i), kStart);
  int closed = 0;
  for (int i = 0; i < 5000; ++i) closed += limits.mayProve(std::to_string(i), kStart) ? 0 : 1;
  EXPECT_EQ(closed, 1024);
}

TEST(ReceiveBudget, IsFullOnlyWhileSomethingWillBeHandled) {
  ReceiveBudget budget(1000);
  budget.delivered(600);
  EXPECT_FALSE(budget.isFull());
  budget.partialChanged(0, 500);
  EXPECT_TRUE(budget.isFull());
  budget.handled(600);
  EXPECT_FALSE(budget.isFull());
  EXPECT_FALSE(budget.isExceededByPartials());
  budget.partialChanged(500, 1001);
  EXPECT_TRUE(budget.isExceededByPartials());
  budget.partialChanged(1001, 0);
  EXPECT_FALSE(budget.isExceededByPartials());
}

TEST(ReceiveBudget, AsksForAMarkWhenItIsWorthOneOrSomebodyWaits) {
  ReceiveBudget budget(1600);
  budget.delivered(100);
  EXPECT_FALSE(budget.isMarkDue());
  budget.partialChanged(0, 1600);
  EXPECT_TRUE(budget.isMarkDue());
  budget.partialChanged(1600, 0);
  budget.delivered(1);
  EXPECT_TRUE(budget.isMarkDue());
  EXPECT_EQ(budget.takeUnmarked(), 101U);
  EXPECT_FALSE(budget.isMarkDue());
}

TEST(PeerLiveness, DropsAHandshakeThatTakesTooLong) {
  PeerLiveness liveness({.handshake = seconds(10)}, kStart);
  liveness.heard(kStart + seconds(9));
  EXPECT_EQ(liveness.tick(kStart + milliseconds(9999), true), PeerLiveness::Action::none);
  EXPECT_EQ(liveness.tick(kStart + seconds(10), true), PeerLiveness::Action::drop);
}

TEST(PeerLiveness, PingsSilenceAndDropsTheDead) {
  PeerLiveness liveness({.ping = seconds(3), .dead = seconds(9)}, kStart);
  liveness.invited(kStart);
  EXPECT_EQ(liveness.tick(kStart + seconds(2), true), PeerLiveness::Action::none);
  EXPECT_EQ(liveness.tick(kStart + seconds(3), true), PeerLiveness::Action::ping);
  EXPECT_EQ(liveness.tick(kStart + seconds(4), true), PeerLiveness::Action::none);
  EXPECT_EQ(liveness.tick(kStart + seconds(6), true), PeerLiveness::Action::ping);
  EXPECT_EQ(liveness.tick(kStart + seconds(9), true), PeerLiveness::Action::drop);
}

TEST(PeerLiveness, KeepsAPeerThatAnswers) {
  PeerLiveness liveness({.ping = seconds(3), .dead = seconds(9)}, kStart);
  liveness.invited(kStart);
  for (int second = 3; second < 300; second += 3) {
    EXPECT_EQ(liveness.tick(kStart + seconds(second), true), PeerLiveness::Action::ping);
    liveness.heard(kStart + seconds(second));
  }
}

TEST(PeerLiveness, DoesNotCountSilenceWhileNothingIsRead) {
  PeerLiveness liveness({.ping = seconds(3), .dead = seconds(9)}, kStart);
  liveness.invited(kStart);
  EXPECT_EQ(liveness.tick(kStart + seconds(60), false), PeerLiveness::Action::none);
  EXPECT_EQ(liveness.tick(kStart + seconds(63), true), PeerLiveness::Action::ping);
}

TEST(PeerLiveness, ClosingHasADeadlineToo) {
  PeerLiveness liveness({.close = seconds(3)}, kStart);
  liveness.invited(kStart);
  liveness.closing(kStart + seconds(1));
  EXPECT_EQ(liveness.tick(kStart + milliseconds(3999), true), PeerLiveness::Action::none);
  EXPECT_EQ(liveness.tick(kStart + seconds(4), true), PeerLiveness::Action::drop);
}

}  // namespace
}  // namespace torvane
