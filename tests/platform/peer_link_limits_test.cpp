#include "platform/linux/peer_link_limits.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr LinkTime kStart{};

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
