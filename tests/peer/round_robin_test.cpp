#include "peer/round_robin.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

TEST(RoundRobin, LetsLanesTakeTurns) {
  RoundRobin<int> waiting;
  for (int i = 0; i < 1000; ++i) waiting.put(1, i);
  waiting.put(2, 2000);
  waiting.put(3, 3000);
  waiting.put(2, 2001);
  std::vector<int> taken;
  for (int i = 0; i < 6; ++i) taken.push_back(waiting.take().value());
  EXPECT_EQ(taken, (std::vector<int>{0, 2000, 3000, 1, 2001, 2}));
}

TEST(RoundRobin, KeepsTheOrderOfALane) {
  RoundRobin<int> waiting;
  for (int i = 0; i < 5; ++i) waiting.put(7, i);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(waiting.take(), i);
  EXPECT_EQ(waiting.take(), std::nullopt);
  EXPECT_TRUE(waiting.empty());
}

TEST(RoundRobin, PassesOverLanesThatAreNotAllowed) {
  RoundRobin<int> waiting;
  waiting.put(1, 10);
  waiting.put(2, 20);
  const auto second = [](std::uint64_t lane) { return lane == 2; };
  EXPECT_TRUE(waiting.has(second));
  EXPECT_EQ(waiting.take(second), 20);
  EXPECT_EQ(waiting.take(second), std::nullopt);
  EXPECT_FALSE(waiting.has(second));
  EXPECT_EQ(waiting.take(), 10);
}

TEST(RoundRobin, GivesUpWhatIsWantedAndKeepsTheRestInOrder) {
  RoundRobin<int> waiting;
  for (int i = 0; i < 6; ++i) waiting.put(1, i);
  waiting.put(2, 8);
  EXPECT_EQ(waiting.takeAll([](int i) { return i % 2 == 0; }), (std::vector<int>{0, 2, 4, 8}));
  for (int i = 1; i < 6; i += 2) EXPECT_EQ(waiting.take(), i);
  EXPECT_TRUE(waiting.empty());
}

}  // namespace
}  // namespace torvane
