#include "torvane_ipad/latency_stats.h"

#include <gtest/gtest.h>

namespace torvane::ipad {
namespace {

using namespace std::chrono_literals;

TEST(LatencyStats, GivesNearestRanks) {
  LatencyStats stats;
  for (int i = 100; i >= 1; --i) stats.add(std::chrono::milliseconds(i));
  EXPECT_EQ(stats.percentile(50), 50ms);
  EXPECT_EQ(stats.percentile(95), 95ms);
  EXPECT_EQ(stats.percentile(99), 99ms);
  EXPECT_EQ(stats.percentile(99.1), 100ms);
  EXPECT_EQ(stats.max(), 100ms);
}

TEST(LatencyStats, FewSamplesStillHaveRanks) {
  LatencyStats stats;
  stats.add(7ms);
  EXPECT_EQ(stats.percentile(0), 7ms);
  EXPECT_EQ(stats.percentile(99), 7ms);
  stats.add(9ms);
  EXPECT_EQ(stats.percentile(50), 7ms);
  EXPECT_EQ(stats.percentile(51), 9ms);
}

TEST(LatencyStats, IsZeroWithoutSamples) {
  EXPECT_EQ(LatencyStats{}.percentile(50), 0ms);
  EXPECT_EQ(LatencyStats{}.max(), 0ms);
}

TEST(LatencyStats, TakesTheSamplesOfOthers) {
  LatencyStats all;
  all.add(1ms);
  LatencyStats other;
  other.add(5ms);
  all.add(other);
  EXPECT_EQ(all.count(), 2U);
  EXPECT_EQ(all.max(), 5ms);
}

}  // namespace
}  // namespace torvane::ipad
