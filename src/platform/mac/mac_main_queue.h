#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "ports/main_queue.h"

namespace torvane {

// Work waits in a queue of its own, and each turn of the main run loop takes one piece of it. The
// system's main dispatch queue would not do: while one of its blocks shows an alert, the alert's
// nested run loop runs no other block of it.
class MacMainQueue final : public MainQueue {
 public:
  void async(std::function<void()> work) override;
  void asyncWhenAwake(std::function<void()> work) override;
  void after(double seconds, std::function<void()> work) override;
  void every(double seconds, std::function<void()> work) override;
  void block(double seconds) override;
  [[nodiscard]] bool isCurrent() const override;

 private:
  void startTimer(double seconds, bool repeats, std::function<void()> work);
  void askForTurn();
  void runFirst();

  std::mutex mutex_;
  std::deque<std::function<void()>> waiting_;
  bool isTurnDue_ = false;  // the run loop was asked to run the first
};

}  // namespace torvane
