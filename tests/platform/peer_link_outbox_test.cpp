#include <gtest/gtest.h>

#include <thread>

#include "platform/linux/peer_link_session.h"

namespace torvane {
namespace {

using Put = PeerOutbox::Put;

TEST(PeerOutbox, WakesOnceForMessagesThatGoTogether) {
  PeerOutbox outbox(1000);
  EXPECT_EQ(outbox.put({{1}}), Put::wake);
  EXPECT_EQ(outbox.put({{2}}), Put::queued);
  const auto taken = outbox.takeAll();
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(taken[0].data, Bytes{1});
  EXPECT_EQ(taken[1].data, Bytes{2});
  EXPECT_EQ(outbox.put({{3}}), Put::queued);  // the sender will look again
  EXPECT_EQ(outbox.takeAll().size(), 1U);
  EXPECT_TRUE(outbox.takeAll().empty());
  EXPECT_EQ(outbox.put({{4}}), Put::wake);
}

TEST(PeerOutbox, CountsWhatIsTakenUntilItIsSent) {
  PeerOutbox outbox(1000);
  outbox.put({Bytes(800)});
  const auto taken = outbox.takeAll();
  outbox.wasSent(taken[0]);
  outbox.put({Bytes(800)});
  EXPECT_EQ(outbox.takeAll().size(), 1U);
  EXPECT_EQ(outbox.put({Bytes(200)}), Put::overflow);
}

TEST(PeerOutbox, TellsAnOverflowOnceAndLetsGoOfItsMessages) {
  PeerOutbox outbox(1000);
  outbox.put({Bytes(600)});
  EXPECT_EQ(outbox.put({Bytes(600)}), Put::overflow);
  EXPECT_EQ(outbox.put({{1}}), Put::closed);
  EXPECT_TRUE(outbox.takeAll().empty());
}

TEST(PeerOutbox, TakesTheLongestMessageBesideSmallOnesAndNoTwoOfThem) {
  const std::size_t longest = PeerOutbox::longestMessage(100'000);
  EXPECT_GT(longest, 98'000U);
  PeerOutbox outbox(100'000);
  for (int i = 0; i < 10; ++i) outbox.put({Bytes(20)});
  EXPECT_EQ(outbox.put({Bytes(longest)}), Put::queued);
  EXPECT_EQ(outbox.put({Bytes(longest)}), Put::overflow);
}

TEST(PeerOutbox, LetsGoOfTheLeasesOfWhatWillNeverBeSent) {
  for (const bool isOverflow : {true, false}) {
    PeerOutbox outbox(1000);
    auto lease = std::make_shared<const int>(0);
    const std::weak_ptr<const int> charged = lease;
    outbox.put({{1}, false, std::move(lease)});
    EXPECT_FALSE(charged.expired());
    if (isOverflow) outbox.put({Bytes(2000)});
    if (!isOverflow) outbox.close();
    EXPECT_TRUE(charged.expired());
  }
}

TEST(PeerOutbox, EmptyMessagesFillItToo) {
  PeerOutbox outbox(1000);
  int put = 0;
  while (outbox.put({{}}) != Put::overflow && put < 1000) ++put;
  EXPECT_LT(put, 20);
}

TEST(PeerOutbox, KeepsTheOrderOfEachOfManySenders) {
  PeerOutbox outbox(std::size_t{1} << 20);
  std::vector<std::thread> senders;
  for (std::uint8_t sender = 0; sender < 4; ++sender) {
    senders.emplace_back([&outbox, sender] {
      for (std::uint8_t i = 0; i < 200; ++i) outbox.put({{sender, i}});
    });
  }
  for (auto& sender : senders) sender.join();
  std::vector<int> next(4);
  for (const auto& message : outbox.takeAll()) {
    EXPECT_EQ(message.data[1], next.at(message.data[0])++);
  }
  EXPECT_EQ(next, std::vector<int>(4, 200));
}

}  // namespace
}  // namespace torvane
