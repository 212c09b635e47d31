#include "platform/linux/qt_main_queue.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <numeric>
#include <thread>
#include <vector>

#include "support/qt_event_loop.h"

namespace torvane {
namespace {

TEST(QtMainQueueTest, RunsWorkInTheOrderGiven) {
  QtMainQueue queue;
  std::vector<int> ran;
  for (int i = 0; i < 1000; ++i) queue.async([&ran, i] { ran.push_back(i); });
  EXPECT_TRUE(ran.empty());
  ASSERT_TRUE(runEventsUntil([&] { return ran.size() == 1000; }));
  std::vector<int> expected(1000);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(ran, expected);
}

TEST(QtMainQueueTest, NeverRunsWorkInsideTheCall) {
  QtMainQueue queue;
  bool isInside = false;
  bool ranInside = true;
  bool isDone = false;
  queue.async([&] {
    isInside = true;
    queue.async([&] {
      ranInside = isInside;
      isDone = true;
    });
    isInside = false;
  });
  ASSERT_TRUE(runEventsUntil([&] { return isDone; }));
  EXPECT_FALSE(ranInside);
}

TEST(QtMainQueueTest, KeepsEachThreadsOrder) {
  constexpr int kThreads = 4;
  constexpr int kEach = 5000;
  QtMainQueue queue;
  std::vector<std::vector<int>> ran(kThreads);
  int count = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEach; ++i) {
        queue.async([&ran, &count, t, i] {
          ran[t].push_back(i);
          ++count;
        });
      }
    });
  }
  EXPECT_TRUE(runEventsUntil([&] { return count == kThreads * kEach; }));
  for (auto& thread : threads) thread.join();
  std::vector<int> expected(kEach);
  std::iota(expected.begin(), expected.end(), 0);
  for (const auto& each : ran) EXPECT_EQ(each, expected);
}

TEST(QtMainQueueTest, LeavesTheThreadAsleepForWhatCanWait) {
  QtMainQueue queue;
  bool ran = false;
  queue.asyncWhenAwake([&] { ran = true; });
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
  queue.async([] {});
  EXPECT_TRUE(runEventsUntil([&] { return ran; }));
}

TEST(QtMainQueueTest, RunsWhatCouldWaitBeforeTimersAndLaterWork) {
  QtMainQueue queue;
  std::vector<std::string> log;
  queue.asyncWhenAwake([&] { log.emplace_back("first"); });
  queue.after(0.01, [&] {
    log.emplace_back("timer");
    queue.asyncWhenAwake([&] { log.emplace_back("second"); });
    queue.async([&] { log.emplace_back("later"); });
  });
  ASSERT_TRUE(runEventsUntil([&] { return log.size() == 4; }));
  EXPECT_EQ(log, (std::vector<std::string>{"first", "timer", "second", "later"}));
}

TEST(QtMainQueueTest, TimersGoOnInTheNestedLoopOfWorkThatWasDueWithThem) {
  QtMainQueue queue;
  QEventLoop nested;
  int ticks = 0;
  bool isOver = false;
  queue.every(0.01, [&] {
    if (nested.isRunning() && ++ticks == 3) nested.quit();
  });
  const auto nestedWork = [&] {
    QTimer::singleShot(10000, &nested, &QEventLoop::quit);  // else it might never end
    nested.exec();
    isOver = true;
  };
  queue.after(0.005, [&] { queue.async(nestedWork); });
  queue.block(0.03);  // both timers are due in one turn
  ASSERT_TRUE(runEventsUntil([&] { return isOver; }));
  EXPECT_EQ(ticks, 3);
}

TEST(QtMainQueueTest, WorkGoesOnInANestedLoop) {
  QtMainQueue queue;
  std::vector<std::string> log;
  QEventLoop nested;
  queue.async([&] {
    log.emplace_back("open");
    nested.exec();
    log.emplace_back("closed");
  });
  queue.async([&] { log.emplace_back("queued before"); });
  queue.async([&] {
    std::thread([&] { queue.async([&] { nested.quit(); }); }).join();
    log.emplace_back("queued more");
  });
  ASSERT_TRUE(runEventsUntil([&] { return !log.empty() && log.back() == "closed"; }));
  EXPECT_EQ(log, (std::vector<std::string>{"open", "queued before", "queued more", "closed"}));
}

TEST(QtMainQueueTest, TimersRunUnderAFloodOfWork) {
  QtMainQueue queue;
  bool timerRan = false;
  std::function<void()> again = [&] {
    if (!timerRan) queue.async(again);
  };
  queue.async(again);
  queue.after(0.01, [&] { timerRan = true; });
  EXPECT_TRUE(runEventsUntil([&] { return timerRan; }));
}

TEST(QtMainQueueTest, RunsOnceAfterTheDelay) {
  QtMainQueue queue;
  QElapsedTimer clock;
  clock.start();
  std::vector<qint64> ran;
  queue.after(0.08, [&] { ran.push_back(clock.elapsed()); });
  ASSERT_TRUE(runEventsUntil([&] { return !ran.empty(); }));
  EXPECT_GE(ran.front(), 79);
  bool laterRan = false;
  queue.after(0.1, [&] { laterRan = true; });
  ASSERT_TRUE(runEventsUntil([&] { return laterRan; }));
  EXPECT_EQ(ran.size(), 1U);
}

TEST(QtMainQueueTest, RepeatsAtTheInterval) {
  QtMainQueue queue;
  QElapsedTimer clock;
  clock.start();
  std::vector<qint64> ticks;
  queue.every(0.08, [&] { ticks.push_back(clock.elapsed()); });
  ASSERT_TRUE(runEventsUntil([&] { return ticks.size() == 10; }));
  EXPECT_GE(ticks.front(), 79);
  EXPECT_GE(ticks.back(), 10 * 80 - 2);
  EXPECT_EQ(ticks.size(), 10U);
}

TEST(QtMainQueueTest, BlockHoldsQueuedWork) {
  QtMainQueue queue;
  bool ran = false;
  queue.async([&] { ran = true; });
  QElapsedTimer clock;
  clock.start();
  queue.block(0.05);
  EXPECT_GE(clock.nsecsElapsed(), 50'000'000);
  EXPECT_FALSE(ran);
  EXPECT_TRUE(runEventsUntil([&] { return ran; }));
}

TEST(QtMainQueueTest, KnowsTheMainThread) {
  const QtMainQueue queue;
  EXPECT_TRUE(queue.isCurrent());
  bool isCurrentElsewhere = true;
  std::thread([&] { isCurrentElsewhere = queue.isCurrent(); }).join();
  EXPECT_FALSE(isCurrentElsewhere);
}

TEST(QtMainQueueTest, DropsWhatWaitsWhenItEnds) {
  const auto held = std::make_shared<int>(0);
  bool ran = false;
  {
    QtMainQueue queue;
    queue.async([held, &ran] { ran = true; });
    queue.after(0, [held, &ran] { ran = true; });
    queue.every(0, [held, &ran] { ran = true; });
  }
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace torvane
