#pragma once

#import <AppKit/AppKit.h>

#include "app/answer_guard.h"

namespace torvane {

// Stands before a window, as long as it lives, and holds back the keys and clicks that an
// AnswerGuard does not take. Main thread only.
class MacAnswerGuard {
 public:
  explicit MacAnswerGuard(NSWindow* window);
  ~MacAnswerGuard();
  MacAnswerGuard(const MacAnswerGuard&) = delete;
  MacAnswerGuard& operator=(const MacAnswerGuard&) = delete;

 private:
  [[nodiscard]] bool takes(NSEvent* event) const;
  void look();

  AnswerGuard guard_;
  NSWindow* window_;
  bool isShown_ = false;
  NSTimer* looks_;
  id monitor_;
};

}  // namespace torvane
