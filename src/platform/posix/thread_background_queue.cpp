#include "platform/posix/thread_background_queue.h"

namespace torvane {
namespace {

constexpr double kLongestDelay = 1e9;  // about 30 years; more would overflow the clock

std::chrono::nanoseconds delay(double seconds) {
  if (!(seconds > 0)) return {};  // also not a number
  const std::chrono::duration<double> bounded(seconds < kLongestDelay ? seconds : kLongestDelay);
  return std::chrono::duration_cast<std::chrono::nanoseconds>(bounded);
}

}  // namespace

ThreadBackgroundQueue::ThreadBackgroundQueue() : thread_([this] { run(); }) {}

ThreadBackgroundQueue::~ThreadBackgroundQueue() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void ThreadBackgroundQueue::after(double seconds, std::function<void()> work) {
  const Clock::time_point due = Clock::now() + delay(seconds);
  {
    const std::lock_guard lock(mutex_);
    if (ending_ || !work) return;
    waiting_.emplace(due, std::move(work));
  }
  changed_.notify_one();
}

void ThreadBackgroundQueue::run() {
  while (const std::function<void()> work = takeDueWork()) work();
}

std::function<void()> ThreadBackgroundQueue::takeDueWork() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    if (waiting_.empty()) {
      changed_.wait(lock);
      continue;
    }
    const auto first = waiting_.begin();
    if (first->first <= Clock::now()) {
      std::function<void()> work = std::move(first->second);
      waiting_.erase(first);
      return work;
    }
    const Clock::time_point due = first->first;  // a copy: the map changes while waiting
    changed_.wait_until(lock, due);
  }
  return {};
}

}  // namespace torvane
