#include "peer/failed_proofs.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

TEST(FailedProofs, AreTooManyOfOneOriginForAWhile) {
  FailedProofs proofs(2);
  proofs.add("a", 0);
  EXPECT_FALSE(proofs.areTooMany("a", 0));
  proofs.add("a", 10);
  EXPECT_TRUE(proofs.areTooMany("a", 59.9));
  EXPECT_FALSE(proofs.areTooMany("b", 59.9));
  EXPECT_FALSE(proofs.areTooMany("a", 60));
  proofs.add("a", 65);
  EXPECT_TRUE(proofs.areTooMany("a", 69.9));
  EXPECT_FALSE(proofs.areTooMany("a", 70));
}

TEST(FailedProofs, OfABoundedNumberOfOriginsAreRemembered) {
  FailedProofs proofs(1);
  for (int i = 0; i < 5000; ++i) proofs.add(std::to_string(i), 0);
  int closed = 0;
  for (int i = 0; i < 5000; ++i) closed += proofs.areTooMany(std::to_string(i), 0) ? 1 : 0;
  EXPECT_EQ(closed, 1024);
}

TEST(FailedProofs, OfLongAgoMakeRoomFirst) {
  FailedProofs proofs(1);
  for (int i = 0; i < 1023; ++i) proofs.add(std::to_string(i), 0);
  proofs.add("!", 30);  // sorts before the others
  proofs.add("new", 60);
  EXPECT_TRUE(proofs.areTooMany("!", 61));
  EXPECT_TRUE(proofs.areTooMany("new", 61));
}

}  // namespace
}  // namespace torvane
