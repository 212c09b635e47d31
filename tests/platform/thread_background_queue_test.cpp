#include "platform/posix/thread_background_queue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <limits>
#include <memory>
#include <vector>

namespace torvane {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;
constexpr double kNever = 3600;

bool happens(std::promise<void>& event) {
  return event.get_future().wait_for(kPatience) == std::future_status::ready;
}

TEST(ThreadBackgroundQueueTest, RunsWorkOnAnotherThread) {
  std::promise<std::thread::id> ran;
  ThreadBackgroundQueue queue;
  queue.after(0, [&] { ran.set_value(std::this_thread::get_id()); });
  EXPECT_NE(ran.get_future().get(), std::this_thread::get_id());
}

TEST(ThreadBackgroundQueueTest, WaitsForTheDelay) {
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  const auto start = std::chrono::steady_clock::now();
  queue.after(0.05, [&] { ran.set_value(); });
  ASSERT_TRUE(happens(ran));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
}

TEST(ThreadBackgroundQueueTest, RunsInOrderOfDueTimes) {
  std::vector<int> order;
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  queue.after(0.08, [&] {
    order.push_back(3);
    ran.set_value();
  });
  queue.after(0.04, [&] { order.push_back(2); });
  queue.after(0, [&] { order.push_back(1); });
  ASSERT_TRUE(happens(ran));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(ThreadBackgroundQueueTest, EarlierWorkOvertakesAWaitingTimer) {
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  queue.after(kNever, [] { ADD_FAILURE(); });
  queue.after(0.01, [&] { ran.set_value(); });
  EXPECT_TRUE(happens(ran));
}

TEST(ThreadBackgroundQueueTest, OddDelaysAreNowOrFarAway) {
  std::promise<void> ran;
  int runs = 0;
  ThreadBackgroundQueue queue;
  queue.after(std::numeric_limits<double>::infinity(), [] { ADD_FAILURE(); });
  queue.after(1e300, [] { ADD_FAILURE(); });
  queue.after(-5, [&] { ++runs; });
  queue.after(std::nan(""), [&] { ++runs; });
  queue.after(0, [&] { ran.set_value(); });
  ASSERT_TRUE(happens(ran));
  EXPECT_EQ(runs, 2);
}

TEST(ThreadBackgroundQueueTest, WorkMayAddWork) {
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  queue.after(0, [&] { queue.after(0, [&] { ran.set_value(); }); });
  EXPECT_TRUE(happens(ran));
}

TEST(ThreadBackgroundQueueTest, EmptyWorkIsIgnored) {
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  queue.after(0, nullptr);
  queue.after(0, [&] { ran.set_value(); });
  EXPECT_TRUE(happens(ran));
}

TEST(ThreadBackgroundQueueTest, DestructionDropsWaitingWork) {
  const auto held = std::make_shared<int>();
  {
    ThreadBackgroundQueue queue;
    queue.after(kNever, [held] { ADD_FAILURE(); });
    EXPECT_EQ(held.use_count(), 2);
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST(ThreadBackgroundQueueTest, DestructionWaitsForRunningWork) {
  std::promise<void> started;
  std::promise<void> mayEnd;
  bool ended = false;
  auto queue = std::make_unique<ThreadBackgroundQueue>();
  queue->after(0, [&] {
    started.set_value();
    mayEnd.get_future().wait();
    ended = true;
  });
  ASSERT_TRUE(happens(started));
  auto destroyed = std::async(std::launch::async, [&] { queue.reset(); });
  mayEnd.set_value();
  destroyed.wait();
  EXPECT_TRUE(ended);
}

TEST(ThreadBackgroundQueueTest, ManyThreadsMayAddWork) {
  constexpr int kThreads = 8;
  constexpr int kEach = 500;
  int runs = 0;
  std::promise<void> ran;
  ThreadBackgroundQueue queue;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&] {
      for (int i = 0; i < kEach; ++i) {
        queue.after(0, [&] {
          if (++runs == kThreads * kEach) ran.set_value();
        });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(happens(ran));
}

}  // namespace
}  // namespace torvane
