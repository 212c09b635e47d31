#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include "ports/background_queue.h"

namespace torvane {

// Runs work on one thread, in the order of its due times by the steady clock; equal times in the
// order given. The destructor waits for the work that is running and drops the rest; not to be
// destroyed by its own work.
class ThreadBackgroundQueue final : public BackgroundQueue {
 public:
  ThreadBackgroundQueue();
  ~ThreadBackgroundQueue() override;
  ThreadBackgroundQueue(const ThreadBackgroundQueue&) = delete;
  ThreadBackgroundQueue& operator=(const ThreadBackgroundQueue&) = delete;

  void after(double seconds, std::function<void()> work) override;

 private:
  using Clock = std::chrono::steady_clock;

  void run();
  std::function<void()> takeDueWork();  // blocks; empty when the queue ends

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<Clock::time_point, std::function<void()>> waiting_;
  bool ending_ = false;
  std::thread thread_;  // last: it uses the members above
};

}  // namespace torvane
