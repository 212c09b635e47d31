#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <optional>

#include "platform/posix/unique_fd.h"

namespace torvane {

// The life of one child process, shared by its handle and the thread that waits for its exit.
class ExitWatch {
 public:
  // `notice` is closed once the child has been reaped, so that the other end of the pipe wakes.
  ExitWatch(pid_t pid, UniqueFd notice) : pid_(pid), notice_(std::move(notice)) {}

  // Blocks until the child has exited, then reaps it. Called once.
  void reap();

  [[nodiscard]] bool isRunning() const;
  void signal(int number);

  // Blocks until the child has been reaped; its exit code, or its signal's number.
  int wait();

 private:
  const pid_t pid_;
  mutable std::mutex mutex_;
  std::condition_variable reaped_;
  std::optional<int> status_;
  UniqueFd notice_;
};

}  // namespace torvane
