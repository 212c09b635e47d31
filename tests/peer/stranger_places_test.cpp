#include "peer/stranger_places.h"

#include <gtest/gtest.h>

#include <set>

namespace torvane {
namespace {

TEST(StrangerPlaces, HoldsSoManyBeforeAnyHasToGo) {
  StrangerPlaces places(3);
  EXPECT_EQ(places.enter(1, "a"), std::nullopt);
  EXPECT_EQ(places.enter(2, "b"), std::nullopt);
  EXPECT_EQ(places.enter(3, "c"), std::nullopt);
  EXPECT_EQ(places.enter(4, "d"), 1U);
}

TEST(StrangerPlaces, SendsTheOldestOfTheBusiestOriginAway) {
  StrangerPlaces places(4);
  const std::string origins[] = {"a", "b", "c", "b"};
  for (std::uint64_t i = 0; i < 4; ++i) EXPECT_EQ(places.enter(i, origins[i]), std::nullopt);
  EXPECT_EQ(places.enter(4, "d"), 1U);
  EXPECT_EQ(places.enter(5, "b"), 3U);
}

TEST(StrangerPlaces, CountsTheNewcomerToItsOrigin) {
  StrangerPlaces places(4);
  places.leave(99);  // nobody
  const std::string origins[] = {"a", "b", "a", "b"};
  for (std::uint64_t i = 0; i < 4; ++i) EXPECT_EQ(places.enter(i, origins[i]), std::nullopt);
  EXPECT_EQ(places.enter(4, "b"), 1U);
}

TEST(StrangerPlaces, GivesThePlaceOfOneThatLeftToTheNext) {
  StrangerPlaces places(2);
  EXPECT_EQ(places.enter(1, "a"), std::nullopt);
  EXPECT_EQ(places.enter(2, "a"), std::nullopt);
  places.leave(1);
  EXPECT_EQ(places.enter(3, "b"), std::nullopt);
  EXPECT_EQ(places.enter(4, "b"), 3U);
}

// Twenty a second from five origins; each newcomer takes a second to say who it is.
TEST(StrangerPlaces, KeepNewcomersUnderAFlood) {
  StrangerPlaces places(16);
  std::uint64_t token = 0;
  std::set<std::uint64_t> gone;
  for (int newcomer = 0; newcomer < 40; ++newcomer) {
    const std::uint64_t mine = ++token;
    if (const auto left = places.enter(mine, "home")) gone.insert(*left);
    for (int i = 0; i < 20; ++i) {
      if (const auto left = places.enter(++token, std::to_string(i % 5))) gone.insert(*left);
    }
    EXPECT_FALSE(gone.contains(mine)) << newcomer;
    places.leave(mine);
  }
  EXPECT_EQ(gone.size(), 40U * 20 - 16 + 1);
}

}  // namespace
}  // namespace torvane
