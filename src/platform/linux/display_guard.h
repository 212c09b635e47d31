#pragma once

#include <QtGlobal>

namespace torvane {

// While it lives, Qt's abort where no display can be reached is an end of the program with one
// sentence and exit status 1. What Qt warns of meanwhile is told when that did not happen. One at a
// time.
class DisplayGuard {
 public:
  DisplayGuard();
  ~DisplayGuard();
  DisplayGuard(const DisplayGuard&) = delete;
  DisplayGuard& operator=(const DisplayGuard&) = delete;

 private:
  QtMessageHandler before_;
};

}  // namespace torvane
