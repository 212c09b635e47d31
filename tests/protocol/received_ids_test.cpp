#include "protocol/received_ids.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <random>
#include <set>

namespace torvane {
namespace {

constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();

std::size_t runsOf(const std::set<std::int64_t>& ids) {
  std::size_t runs = 0;
  for (auto id = ids.begin(); id != ids.end(); ++id) {
    if (id == ids.begin() || *std::prev(id) != *id - 1) ++runs;
  }
  return runs;
}

TEST(ReceivedIDs, IsEmptyAtFirst) {
  const ReceivedIDs ids;
  EXPECT_TRUE(ids.empty());
  EXPECT_FALSE(ids.contains(0));
  EXPECT_EQ(ids.runCount(), 0U);
}

TEST(ReceivedIDs, TakesAnIdOnce) {
  ReceivedIDs ids;
  EXPECT_TRUE(ids.insert(5));
  EXPECT_FALSE(ids.insert(5));
  EXPECT_TRUE(ids.contains(5));
  EXPECT_FALSE(ids.contains(4));
  EXPECT_FALSE(ids.contains(6));
}

TEST(ReceivedIDs, JoinsNeighbours) {
  ReceivedIDs ids;
  ids.insert(1);
  ids.insert(3);
  EXPECT_EQ(ids.runCount(), 2U);
  ids.insert(2);
  EXPECT_EQ(ids.runCount(), 1U);
  ids.insert(0);
  ids.insert(4);
  EXPECT_EQ(ids.runCount(), 1U);
  for (int id = 0; id <= 4; ++id) EXPECT_FALSE(ids.insert(id)) << id;
}

TEST(ReceivedIDs, KeepsTheEndsOfTheRangeApart) {
  ReceivedIDs ids;
  for (const auto id : {kLargest, kSmallest, kSmallest + 1, kLargest - 1}) {
    EXPECT_TRUE(ids.insert(id));
    EXPECT_FALSE(ids.insert(id));
  }
  EXPECT_EQ(ids.runCount(), 2U);
  EXPECT_FALSE(ids.contains(0));
}

// Ids crowd around a few places, the ends of the range among them, so that they often touch.
TEST(ReceivedIDs, AnswersLikeASet) {
  std::mt19937_64 random(20240101);
  for (int round = 0; round < 200; ++round) {
    ReceivedIDs ids;
    std::set<std::int64_t> model;
    for (int i = 0; i < 300; ++i) {
      const auto offset = static_cast<std::int64_t>(random() % 64);
      const std::int64_t places[] = {kSmallest + offset, kLargest - offset, offset - 32,
                                     offset + 100};
      const std::int64_t id = places[random() % 4];
      ASSERT_EQ(ids.contains(id), model.count(id) == 1);
      ASSERT_EQ(ids.insert(id), model.insert(id).second);
      ASSERT_EQ(ids.runCount(), runsOf(model));
    }
  }
}

TEST(ReceivedIDs, KeepsTenMillionSequentialIdsAsOneRun) {
  ReceivedIDs ids;
  std::int64_t taken = 0;
  for (std::int64_t id = 0; id < 10'000'000; ++id) taken += ids.insert(id) ? 1 : 0;
  EXPECT_EQ(taken, 10'000'000);
  EXPECT_EQ(ids.runCount(), 1U);
  EXPECT_FALSE(ids.insert(0));
  EXPECT_FALSE(ids.insert(9'999'999));
}

}  // namespace
}  // namespace torvane
