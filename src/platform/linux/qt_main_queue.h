#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/posix/unique_fd.h"
#include "ports/main_queue.h"

namespace torvane {

// Queued work on Qt's event loop; made on the main thread, before the loop runs.
//
// An event counter is readable while work waits that the loop is to wake up for, so every loop that
// listens to it, the nested one of an alert too, takes the work up in order. It is a file
// descriptor rather than an event posted to an object because Qt handles posted events until none
// is left: a flood of work would hold up timers and the user's input.
class QtMainQueue final : public MainQueue {
 public:
  QtMainQueue();
  ~QtMainQueue() override;
  QtMainQueue(const QtMainQueue&) = delete;
  QtMainQueue& operator=(const QtMainQueue&) = delete;

  void async(std::function<void()> work) override;
  void asyncWhenAwake(std::function<void()> work) override;
  void after(double seconds, std::function<void()> work) override;
  void every(double seconds, std::function<void()> work) override;
  void block(double seconds) override;
  [[nodiscard]] bool isCurrent() const override;

 private:
  [[nodiscard]] std::function<void()> behindWhatRests(std::function<void()> work);
  std::deque<std::function<void()>> takeWhatRests();
  void runSome();
  std::function<void()> takeFirst();  // empty when nothing waits

  const std::thread::id mainThread_ = std::this_thread::get_id();
  UniqueFd counter_;
  std::mutex mutex_;
  std::deque<std::function<void()>> waiting_;  // under mutex_
  bool isReadable_ = false;                    // the counter, likewise
  QObject timers_;                             // last: ends every timer first
};

}  // namespace torvane
