#include "platform/mac/mac_answer_guard.h"

#import <CoreGraphics/CoreGraphics.h>
#import <QuartzCore/QuartzCore.h>

namespace torvane {
namespace {

constexpr NSEventMask kKeysAndClicks = NSEventMaskKeyDown | NSEventMaskKeyUp |
                                       NSEventMaskLeftMouseDown | NSEventMaskLeftMouseUp |
                                       NSEventMaskRightMouseDown | NSEventMaskRightMouseUp |
                                       NSEventMaskOtherMouseDown | NSEventMaskOtherMouseUp;

constexpr CGKeyCode kKeyCodes = 128;
constexpr CGKeyCode kCapsLock = 57;  // counts as held for as long as it is on

bool isInputHeld() {
  if ([NSEvent pressedMouseButtons] != 0) return true;
  for (CGKeyCode key = 0; key < kKeyCodes; ++key) {
    if (key == kCapsLock) continue;
    if (CGEventSourceKeyState(kCGEventSourceStateCombinedSessionState, key)) return true;
  }
  return false;
}

}  // namespace

MacAnswerGuard::MacAnswerGuard(NSWindow* window)
    : window_(window),
      looks_([NSTimer timerWithTimeInterval:AnswerGuard::kLookInterval
                                    repeats:YES
                                      block:^(NSTimer* fired) {
                                        static_cast<void>(fired);
                                        look();
                                      }]),
      monitor_([NSEvent addLocalMonitorForEventsMatchingMask:kKeysAndClicks
                                                     handler:^NSEvent*(NSEvent* event) {
                                                       return takes(event) ? event : nil;
                                                     }]) {
  [[NSRunLoop mainRunLoop] addTimer:looks_ forMode:NSRunLoopCommonModes];
}

MacAnswerGuard::~MacAnswerGuard() {
  [looks_ invalidate];
  [NSEvent removeMonitor:monitor_];
}

// Only keys may be asked whether they repeat themselves.
bool MacAnswerGuard::takes(NSEvent* event) const {
  if (event.window != window_) return true;
  const bool isKey = event.type == NSEventTypeKeyDown || event.type == NSEventTypeKeyUp;
  return isKey ? guard_.takesKeys(event.isARepeat) : guard_.takesClicks();
}

// The window gets the keyboard as it opens, and keeps it for as long as the program is in front.
void MacAnswerGuard::look() {
  if (!isShown_ && window_.isVisible) {
    isShown_ = true;
    guard_.didShow(CACurrentMediaTime());
    guard_.didGetKeyboard(CACurrentMediaTime());
  }
  if (guard_.needsLooks()) guard_.look(CACurrentMediaTime(), isInputHeld());
}

}  // namespace torvane
