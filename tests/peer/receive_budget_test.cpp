#include "peer/receive_budget.h"

#include <gtest/gtest.h>

#include <vector>

namespace torvane {
namespace {

constexpr std::uint64_t kGreedy = 1;
constexpr std::uint64_t kSecond = 2;
constexpr std::uint64_t kThird = 3;
constexpr std::uint64_t kPolite = 4;

class ReceiveBudgetTest : public testing::Test {
 protected:
  int calls = 0;
  std::shared_ptr<ReceiveBudget> budget = std::make_shared<ReceiveBudget>(
      ReceiveShares{.inAll = 1000, .reserved = 200, .ofOne = 400, .own = 10}, [this] { ++calls; });
};

TEST_F(ReceiveBudgetTest, StopsAPeerBeyondItsShareAndNobodyElse) {
  const auto first = budget->hold(kGreedy, 400);
  EXPECT_TRUE(budget->mayRead(kGreedy));
  const auto second = budget->hold(kGreedy, 1);
  EXPECT_FALSE(budget->mayRead(kGreedy));
  EXPECT_TRUE(budget->mayRead(kPolite));
}

TEST_F(ReceiveBudgetTest, CountsAMessageUntilTheLastCopyOfItsLeaseHasGone) {
  auto lease = budget->hold(kGreedy, 500);
  auto copy = lease;
  lease.reset();
  EXPECT_FALSE(budget->mayRead(kGreedy));
  copy.reset();
  EXPECT_TRUE(budget->mayRead(kGreedy));
}

TEST_F(ReceiveBudgetTest, TellsOnceThatThereIsRoomAgainAndNotBeforeItIsWorthwhile) {
  std::vector<MessageLease> leases;
  for (int i = 0; i < 41; ++i) leases.push_back(budget->hold(kGreedy, 10));
  EXPECT_FALSE(budget->mayRead(kGreedy));
  while (leases.size() > 31) leases.pop_back();
  EXPECT_EQ(calls, 0);
  leases.pop_back();
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(budget->mayRead(kGreedy));
  leases.clear();
  EXPECT_EQ(calls, 1);
}

TEST_F(ReceiveBudgetTest, KeepsRoomForThoseWhoHoldLittle) {
  const auto first = budget->hold(kGreedy, 400);
  const auto second = budget->hold(kSecond, 400);
  auto third = budget->hold(kThird, 40);
  EXPECT_FALSE(budget->mayRead(kGreedy));
  EXPECT_FALSE(budget->mayRead(kThird));
  EXPECT_TRUE(budget->mayRead(kPolite));
  const auto small = budget->hold(kPolite, 10);
  EXPECT_TRUE(budget->mayRead(kPolite));
  const auto more = budget->hold(kPolite, 1);
  EXPECT_FALSE(budget->mayRead(kPolite));
}

TEST_F(ReceiveBudgetTest, AnybodysAnswerMakesRoomForAll) {
  auto first = budget->hold(kGreedy, 400);
  const auto second = budget->hold(kSecond, 400);
  const auto third = budget->hold(kThird, 40);
  EXPECT_FALSE(budget->mayRead(kThird));
  first.reset();
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(budget->mayRead(kThird));
}

TEST_F(ReceiveBudgetTest, CountsTheMessageThatIsStillComingIn) {
  auto held = budget->hold(kGreedy, 100);
  budget->partialChanged(kGreedy, 0, 301);
  EXPECT_FALSE(budget->mayRead(kGreedy));
  held.reset();
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(budget->mayRead(kGreedy));
}

TEST_F(ReceiveBudgetTest, NeverWaitsForUnfinishedMessagesAlone) {
  budget->partialChanged(kGreedy, 0, 500);
  budget->partialChanged(kSecond, 0, 500);
  EXPECT_TRUE(budget->mayRead(kGreedy));
  EXPECT_FALSE(budget->isExceededByPartials());
  budget->partialChanged(kSecond, 500, 501);
  EXPECT_TRUE(budget->isExceededByPartials());
  budget->partialChanged(kGreedy, 500, 0);
  EXPECT_FALSE(budget->isExceededByPartials());
}

TEST_F(ReceiveBudgetTest, KeepsNothingOfAPeerThatHasGone) {
  auto lease = budget->hold(kGreedy, 500);
  EXPECT_FALSE(budget->mayRead(kGreedy));
  budget->leave(kGreedy);
  lease.reset();
  EXPECT_EQ(calls, 0);
  EXPECT_TRUE(budget->mayRead(kGreedy));
}

}  // namespace
}  // namespace torvane
