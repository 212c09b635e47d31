#pragma once

#include <atomic>

#include "engine/abandonable_processes.h"

namespace torvane {

// One attempt to update: a background thread is at it, and the main thread may abandon it.
struct UpdateAttempt {
  explicit UpdateAttempt(ProcessLauncher& launcher) : processes(launcher) {}

  AbandonableProcesses processes;
  std::atomic<bool> isAtWork{false};     // with files and tools
  std::atomic<bool> isReplacing{false};  // the installed copy is touched, and is made whole again
};

// Holds a flag while it lives.
class HeldFlag {
 public:
  explicit HeldFlag(std::atomic<bool>& flag) : flag_(flag) { flag_ = true; }
  ~HeldFlag() { flag_ = false; }
  HeldFlag(const HeldFlag&) = delete;
  HeldFlag& operator=(const HeldFlag&) = delete;

 private:
  std::atomic<bool>& flag_;
};

}  // namespace torvane
