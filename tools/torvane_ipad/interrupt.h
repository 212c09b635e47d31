#pragma once

#include <chrono>

namespace torvane::ipad {

// From now on Ctrl-C and a request to terminate are noticed instead of ending the program.
void noticeInterrupts();
[[nodiscard]] bool wasInterrupted();

// Sleeps for `duration`; ends early when interrupted.
void sleepUnlessInterrupted(std::chrono::duration<double> duration);

}  // namespace torvane::ipad
