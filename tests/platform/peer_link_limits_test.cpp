#include "platform/linux/peer_link_limits.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr LinkTime kStart{};

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
