#include "torvane_ipad/interrupt.h"

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace torvane::ipad {
namespace {

std::atomic<bool> interrupted = false;  // lock-free, so a signal handler may set it

void notice(int) {
  interrupted = true;
}

}  // namespace

void noticeInterrupts() {
  struct sigaction action {};
  action.sa_handler = notice;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

bool wasInterrupted() {
  return interrupted;
}

void sleepUnlessInterrupted(std::chrono::duration<double> duration) {
  // The signal may be delivered to any thread, so the sleep is cut into pieces.
  constexpr std::chrono::duration<double> kPiece(0.05);
  const auto end = std::chrono::steady_clock::now() + duration;
  while (!wasInterrupted()) {
    const std::chrono::duration<double> left = end - std::chrono::steady_clock::now();
    if (left.count() <= 0) return;
    std::this_thread::sleep_for(std::min(left, kPiece));
  }
}

}  // namespace torvane::ipad
