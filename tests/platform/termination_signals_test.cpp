#include "platform/linux/termination_signals.h"

#include <gtest/gtest.h>

#include <csignal>

#include "support/qt_event_loop.h"

namespace torvane {
namespace {

class TerminationSignalsTest : public testing::TestWithParam<int> {};

TEST_P(TerminationSignalsTest, ReachTheEventLoop) {
  int count = 0;
  const TerminationSignals watched([&] { ++count; });
  std::raise(GetParam());
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(runEventsUntil([&] { return count == 1; }));
}

INSTANTIATE_TEST_SUITE_P(Each, TerminationSignalsTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST(TerminationSignals, OneThatIsIgnoredStaysIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  int count = 0;
  {
    const TerminationSignals watched([&] { ++count; });
    std::raise(SIGHUP);
    std::raise(SIGTERM);
    EXPECT_TRUE(runEventsUntil([&] { return count == 1; }));
  }
  EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST(TerminationSignals, AreTheSystemsAgainAfterwards) {
  {
    const TerminationSignals watched([] {});
  }
  EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

}  // namespace
}  // namespace torvane
