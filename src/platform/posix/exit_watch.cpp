#include "platform/posix/exit_watch.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>

namespace torvane {
namespace {

constexpr int kUnknownStatus = -1;  // somebody else reaped our child

// Leaves the exited child as a zombie, so that its process id cannot be used again yet.
void waitForExit(pid_t pid) {
  siginfo_t info{};
  while (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0) {
    if (errno != EINTR) return;
  }
}

int takeStatus(pid_t pid) {
  int status = 0;
  pid_t reaped = -1;
  do {
    reaped = ::waitpid(pid, &status, 0);
  } while (reaped < 0 && errno == EINTR);
  if (reaped != pid) return kUnknownStatus;
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

void ExitWatch::reap() {
  waitForExit(pid_);
  const std::lock_guard lock(mutex_);
  status_ = takeStatus(pid_);
  notice_.reset();
  reaped_.notify_all();
}

bool ExitWatch::isRunning() const {
  const std::lock_guard lock(mutex_);
  return !status_;
}

// The lock keeps reap() from freeing the process id between the look and the signal.
void ExitWatch::signal(int number) {
  const std::lock_guard lock(mutex_);
  if (!status_) ::kill(pid_, number);
}

int ExitWatch::wait() {
  std::unique_lock lock(mutex_);
  reaped_.wait(lock, [this] { return status_.has_value(); });
  return *status_;
}

}  // namespace torvane
