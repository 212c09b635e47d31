#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "ports/main_queue.h"

namespace torvane {

// Carries work to the main queue for an owner that may be gone by the time it would run; then the
// work is dropped. Copies may be used on any thread.
class MainHop {
 public:
  MainHop(MainQueue& queue, std::weak_ptr<const void> owner)
      : queue_(&queue), owner_(std::move(owner)) {}

  void async(std::function<void()> work) const { queue_->async(whileOwned(std::move(work))); }
  void asyncWhenAwake(std::function<void()> work) const {
    queue_->asyncWhenAwake(whileOwned(std::move(work)));
  }

  // Main thread only, as MainQueue says.
  void after(double seconds, std::function<void()> work) const {
    queue_->after(seconds, whileOwned(std::move(work)));
  }
  void every(double seconds, std::function<void()> work) const {
    queue_->every(seconds, whileOwned(std::move(work)));
  }

 private:
  [[nodiscard]] std::function<void()> whileOwned(std::function<void()> work) const {
    return [owner = owner_, work = std::move(work)] {
      if (!owner.expired()) work();
    };
  }

  MainQueue* queue_;
  std::weak_ptr<const void> owner_;
};

}  // namespace torvane
