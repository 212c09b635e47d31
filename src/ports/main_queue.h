#pragma once

#include <functional>

namespace torvane {

// The one thread that owns all state of the program, with its timers.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  // Queues work behind everything queued before. Any thread. Never runs it inside the call.
  // Queued work goes on while a modal alert is up.
  virtual void async(std::function<void()> work) = 0;

  // Likewise, for what nobody waits for: the thread is not woken for it. The work runs when the
  // thread is awake the next time, before what is queued later, and before a timer's work unless
  // other work waits. It must not show an alert.
  virtual void asyncWhenAwake(std::function<void()> work) = 0;

  // Runs work once on the main thread, `seconds` from now. Called on the main thread.
  virtual void after(double seconds, std::function<void()> work) = 0;

  // Runs work on the main thread every `seconds`, the first time after one interval, until the
  // process ends. Called on the main thread.
  virtual void every(double seconds, std::function<void()> work) = 0;

  // Holds the main thread itself for `seconds`; nothing queued runs meanwhile.
  virtual void block(double seconds) = 0;

  // True when called on the main thread. Any thread.
  [[nodiscard]] virtual bool isCurrent() const = 0;
};

}  // namespace torvane
