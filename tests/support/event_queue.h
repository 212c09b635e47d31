#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace torvane::testing {

// What happened, in order, for a thread that waits for it.
template <typename Event>
class EventQueue {
 public:
  void put(Event event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    arrived_.notify_all();
  }

  // None when nothing happened for a long time.
  std::optional<Event> next(std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, deadline, [this] { return !events_.empty(); })) return {};
    std::optional<Event> event(std::move(events_.front()));
    events_.pop_front();
    return event;
  }

  [[nodiscard]] bool empty() {
    const std::lock_guard lock(mutex_);
    return events_.empty();
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Event> events_;
};

}  // namespace torvane::testing
