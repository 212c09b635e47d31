#pragma once

#include <functional>

namespace torvane {

// Work off the main thread.
class BackgroundQueue {
 public:
  virtual ~BackgroundQueue() = default;

  // Runs work once on a background thread, `seconds` from now. Any thread. Work still waiting
  // when the process ends is dropped.
  virtual void after(double seconds, std::function<void()> work) = 0;
};

}  // namespace torvane
