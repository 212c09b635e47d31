#include "protocol/token_bucket.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

int takeAll(TokenBucket& bucket, double now) {
  int taken = 0;
  while (bucket.hasToken(now)) {
    bucket.take();
    ++taken;
  }
  return taken;
}

TEST(TokenBucket, LetsItsCapacityThroughAtOnce) {
  TokenBucket bucket(5, 2);
  EXPECT_EQ(takeAll(bucket, 0), 5);
  EXPECT_FALSE(bucket.hasToken(0));
}

TEST(TokenBucket, FillsAtItsRate) {
  TokenBucket bucket(5, 2);
  takeAll(bucket, 100);
  EXPECT_FALSE(bucket.hasToken(100.25));
  EXPECT_EQ(takeAll(bucket, 101), 2);
}

TEST(TokenBucket, NeverHoldsMoreThanItsCapacity) {
  TokenBucket bucket(5, 2);
  takeAll(bucket, 0);
  EXPECT_EQ(takeAll(bucket, 1e9), 5);
}

TEST(TokenBucket, LosesNothingToBeingAsked) {
  TokenBucket bucket(1, 1);
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(bucket.hasToken(0));
  bucket.take();
  for (int tenths = 1; tenths < 10; ++tenths) EXPECT_FALSE(bucket.hasToken(tenths / 10.0));
  EXPECT_TRUE(bucket.hasToken(1.001));
}

}  // namespace
}  // namespace torvane
