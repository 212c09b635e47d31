#include "peer/invitation_valve.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

Bytes keyOf(int number) {
  Bytes key(32);
  key[0] = static_cast<std::uint8_t>(number);
  key[1] = static_cast<std::uint8_t>(number >> 8);
  return key;
}

Inviter stranger(int key, const std::string& origin = "") {
  return {keyOf(key), origin, false};
}

Inviter oldApp(const std::string& origin = "") {
  return {std::nullopt, origin, false};
}

const Inviter kPaired{keyOf(9999), "home", true};

// Invites at `now` and is answered at once.
bool passes(InvitationValve& valve, const Inviter& inviter, double now) {
  return valve.letIn(inviter, now) != nullptr;
}

TEST(InvitationValve, LetsThirtyStrangersThroughInAnyMinute) {
  InvitationValve valve;
  std::vector<double> passed;
  int key = 0;
  for (double now = 1000; now < 1300; now += 0.25) {
    if (passes(valve, stranger(++key), now)) passed.push_back(now);
  }
  ASSERT_EQ(passed.size(), 150U);
  for (std::size_t i = 30; i < passed.size(); ++i) EXPECT_GE(passed[i] - passed[i - 30], 60);
}

TEST(InvitationValve, LetsAnotherThroughAMinuteAfterTheFirst) {
  InvitationValve valve({.perMinute = 2});
  EXPECT_TRUE(passes(valve, stranger(1), 0));
  EXPECT_TRUE(passes(valve, stranger(2), 30));
  EXPECT_FALSE(passes(valve, stranger(3), 59.9));
  EXPECT_TRUE(passes(valve, stranger(3), 60));
  EXPECT_FALSE(passes(valve, stranger(4), 89.9));
  EXPECT_TRUE(passes(valve, stranger(4), 90));
}

TEST(InvitationValve, LeavesRoomForOthersWhenOneKeyInvitesOnAndOn) {
  InvitationValve valve;
  int passed = 0;
  for (int i = 0; i < 100; ++i) passed += passes(valve, stranger(1), i * 0.5) ? 1 : 0;
  EXPECT_EQ(passed, 6);
  EXPECT_TRUE(passes(valve, stranger(2), 50));
}

TEST(InvitationValve, LeavesRoomForOthersWhenOneOriginInvitesOnAndOn) {
  InvitationValve valve;
  int passed = 0;
  for (int i = 0; i < 100; ++i) passed += passes(valve, stranger(i, "eve"), i * 0.5) ? 1 : 0;
  EXPECT_EQ(passed, 15);
  EXPECT_TRUE(passes(valve, stranger(200, "ann"), 50));
}

TEST(InvitationValve, CountsNoOriginWhereNoneIsKnown) {
  InvitationValve valve;
  int passed = 0;
  for (int i = 0; i < 40; ++i) passed += passes(valve, stranger(i), 0) ? 1 : 0;
  EXPECT_EQ(passed, 30);
}

TEST(InvitationValve, LetsFewThroughThatHaveNoKey) {
  InvitationValve valve;
  int ofOne = 0;
  for (int i = 0; i < 10; ++i) ofOne += passes(valve, oldApp("eve"), 0) ? 1 : 0;
  EXPECT_EQ(ofOne, 2);
  int ofOthers = 0;
  for (int i = 0; i < 10; ++i) ofOthers += passes(valve, oldApp(std::to_string(i)), 0) ? 1 : 0;
  EXPECT_EQ(ofOthers, 4);
  EXPECT_TRUE(passes(valve, stranger(1, "eve"), 0));
}

TEST(InvitationValve, CountsThoseWithoutAKeyAsStrangers) {
  InvitationValve valve({.perMinute = 2});
  EXPECT_TRUE(passes(valve, stranger(1), 0));
  EXPECT_TRUE(passes(valve, oldApp(), 0));
  EXPECT_FALSE(passes(valve, stranger(2), 0));
}

TEST(InvitationValve, LetsPairedDevicesThroughUncounted) {
  InvitationValve valve;
  for (int i = 0; i < 500; ++i) ASSERT_TRUE(passes(valve, kPaired, 0)) << i;
  int passed = 0;
  for (int i = 0; i < 40; ++i) passed += passes(valve, stranger(i), 0) ? 1 : 0;
  EXPECT_EQ(passed, 30);
  EXPECT_TRUE(passes(valve, kPaired, 0));
}

// An alert nobody answers, and a new stranger every 30 seconds.
TEST(InvitationValve, LetsAPairedDeviceThroughHoweverManyStrangersWait) {
  InvitationValve valve;
  std::vector<InvitationValve::Waiting> waiting;
  for (int i = 0; i < 1000; ++i) {
    if (auto one = valve.letIn(stranger(i), i * 30.0)) waiting.push_back(std::move(one));
  }
  EXPECT_EQ(waiting.size(), 64U);
  EXPECT_TRUE(passes(valve, kPaired, 30'000));
  waiting.pop_back();
  EXPECT_TRUE(passes(valve, stranger(2000), 30'000));
}

TEST(InvitationValve, CapsTheWaitingOfOneKeyAndOfOneOrigin) {
  InvitationValve valve;
  std::vector<InvitationValve::Waiting> waiting;
  const auto wait = [&](const Inviter& inviter, double now) {
    auto one = valve.letIn(inviter, now);
    if (one) waiting.push_back(std::move(one));
    return waiting.size();
  };
  for (int i = 0; i < 20; ++i) wait(stranger(1, "eve"), i * 100.0);
  EXPECT_EQ(waiting.size(), 4U);
  for (int i = 0; i < 20; ++i) wait(stranger(10 + i, "eve"), 10'000 + i * 100.0);
  EXPECT_EQ(waiting.size(), 16U);
  EXPECT_EQ(wait(stranger(100, "ann"), 20'000), 17U);
}

TEST(InvitationValve, BoundsTheMemoryThatPairedDevicesTake) {
  InvitationValve valve({.waitingRegistered = 3});
  std::vector<InvitationValve::Waiting> waiting;
  for (int i = 0; i < 3; ++i) waiting.push_back(valve.letIn(kPaired, 0));
  ASSERT_TRUE(waiting.back());
  EXPECT_FALSE(passes(valve, kPaired, 0));
  EXPECT_TRUE(passes(valve, stranger(1), 0));
  waiting.pop_back();
  EXPECT_TRUE(passes(valve, kPaired, 0));
}

TEST(InvitationValve, CountsPairedDevicesAndStrangersThatWaitApart) {
  InvitationValve valve({.waiting = 3, .waitingRegistered = 3});
  std::vector<InvitationValve::Waiting> waiting;
  for (int i = 0; i < 3; ++i) waiting.push_back(valve.letIn(stranger(i), 0));
  for (int i = 0; i < 3; ++i) waiting.push_back(valve.letIn(kPaired, 0));
  for (const auto& one : waiting) EXPECT_TRUE(one);
  EXPECT_FALSE(passes(valve, stranger(4), 0));
  EXPECT_FALSE(passes(valve, kPaired, 0));
}

TEST(InvitationValve, MayGoBeforeThoseThatWait) {
  auto valve = std::make_unique<InvitationValve>();
  const auto waiting = valve->letIn(kPaired, 0);
  valve.reset();
  EXPECT_EQ(waiting->key, kPaired.key);
}

TEST(Inviter, IsRegisteredWhenItsKeyIs) {
  RegisteredKeys registered;
  registered.insert("AQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQE=");
  EXPECT_TRUE(makeInviter(Bytes(32, 1), "", registered).isRegistered);
  EXPECT_FALSE(makeInviter(Bytes(32, 2), "", registered).isRegistered);
  EXPECT_FALSE(makeInviter(std::nullopt, "", registered).isRegistered);
}

TEST(Inviter, HasNoKeyWhenWhatItSentIsNone) {
  const RegisteredKeys registered;
  EXPECT_EQ(makeInviter(Bytes(32, 1), "here", registered).key, Bytes(32, 1));
  for (const std::size_t size : {0U, 31U, 33U}) {
    EXPECT_FALSE(makeInviter(Bytes(size, 1), "here", registered).key) << size;
  }
  EXPECT_EQ(makeInviter(std::nullopt, "here", registered).origin, "here");
}

}  // namespace
}  // namespace torvane
