#include "platform/mac/mac_main_queue.h"

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <utility>

#include "platform/mac/edge.h"

namespace torvane {

void MacMainQueue::async(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
  if (!isTurnDue_) askForTurn();
}

void MacMainQueue::asyncWhenAwake(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
}

// The common modes are those of alerts and open menus too.
void MacMainQueue::askForTurn() {
  isTurnDue_ = true;
  CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
    runFirst();
  });
  CFRunLoopWakeUp(CFRunLoopGetMain());
}

// Asks for the next turn before the work runs, since that may begin a nested loop.
void MacMainQueue::runFirst() {
  std::function<void()> work;
  {
    const std::lock_guard lock(mutex_);
    isTurnDue_ = false;
    if (waiting_.empty()) return;
    work = std::move(waiting_.front());
    waiting_.pop_front();
    if (!waiting_.empty()) askForTurn();
  }
  atEdge(work);
}

void MacMainQueue::after(double seconds, std::function<void()> work) {
  startTimer(seconds, false, std::move(work));
}

void MacMainQueue::every(double seconds, std::function<void()> work) {
  startTimer(seconds, true, std::move(work));
}

// A timer does not fire while its own callback runs, so the work, which may show an alert, runs
// after it, behind what waits.
void MacMainQueue::startTimer(double seconds, bool repeats, std::function<void()> work) {
  NSTimer* timer = [NSTimer timerWithTimeInterval:seconds
                                          repeats:repeats
                                            block:^(NSTimer* fired) {
                                              static_cast<void>(fired);
                                              async(work);
                                            }];
  [[NSRunLoop mainRunLoop] addTimer:timer forMode:NSRunLoopCommonModes];
}

void MacMainQueue::block(double seconds) { [NSThread sleepForTimeInterval:seconds]; }

bool MacMainQueue::isCurrent() const { return [NSThread isMainThread]; }

}  // namespace torvane
