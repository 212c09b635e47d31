#include "peer/peer_turns.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

namespace torvane {
namespace {

const PeerID kGreedy{1, "Greedy"};
const PeerID kPolite{2, "Polite"};

class PeerTurnsTest : public testing::Test {
 protected:
  void note(const PeerID& peer, std::string text) {
    turns.async(peer, [this, text = std::move(text)] { done += text; });
  }
  // Runs the next piece of work of the main queue; false when there is none.
  bool runNext() {
    if (queue.empty()) return false;
    const auto work = std::move(queue.front());
    queue.pop_front();
    work();
    return true;
  }

  std::deque<PeerTurns::Work> queue;  // the main queue
  std::string done;
  PeerTurns turns{[this](PeerTurns::Work work) { queue.push_back(std::move(work)); }};
};

TEST_F(PeerTurnsTest, NobodyWaitsForAllThatAnotherHasSent) {
  for (int i = 0; i < 100; ++i) note(kGreedy, "g");
  note(kPolite, "p");
  note(kPolite, "q");
  for (int i = 0; i < 4; ++i) runNext();
  EXPECT_EQ(done, "gpgq");
  while (runNext()) {
  }
  EXPECT_EQ(done.size(), 102U);
}

TEST_F(PeerTurnsTest, OtherWorkWaitsForOneMessageAtMost) {
  for (int i = 0; i < 100; ++i) note(kGreedy, "g");
  queue.emplace_back([this] { done += "timer"; });
  runNext();
  runNext();
  EXPECT_EQ(done, "gtimer");
}

TEST_F(PeerTurnsTest, GoesOnInsideTheLoopOfAnAlert) {
  turns.async(kGreedy, [this] {
    while (runNext()) {
    }
    done += "closed";
  });
  note(kGreedy, "a");
  note(kPolite, "b");
  runNext();
  EXPECT_EQ(done, "baclosed");
}

TEST_F(PeerTurnsTest, StartsAgainAfterTheLast) {
  note(kGreedy, "a");
  runNext();
  EXPECT_FALSE(runNext());
  note(kGreedy, "b");
  EXPECT_TRUE(runNext());
  EXPECT_EQ(done, "ab");
}

}  // namespace
}  // namespace torvane
