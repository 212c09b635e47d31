// Threads, the main run loop on a clock that stands still, and the other queues.

#include <algorithm>
#include <thread>

#include "mac/fakes/fake_system.h"

namespace {
const std::thread::id mainThread = std::this_thread::get_id();
}

@implementation NSThread
+ (BOOL)isMainThread {
  return std::this_thread::get_id() == mainThread;
}
+ (void)sleepForTimeInterval:(NSTimeInterval)seconds {
  fake::say("sleep " + std::to_string((int)(seconds * 1000)) + " ms");
}
@end

@interface NSTimer () {
 @public
  fake::Timer _timer;
}
@end
@implementation NSTimer
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer*))block {
  static int made = 0;
  NSTimer* timer = [[NSTimer alloc] init];
  timer->_timer = {fake::system().now + interval, repeats ? interval : 0, [block] { block(nil); },
                   ++made};
  return timer;
}
- (void)invalidate {
  std::erase_if(fake::system().timers,
                [&](const fake::Timer& timer) { return timer.number == _timer.number; });
}
@end

@implementation NSRunLoop
+ (NSRunLoop*)mainRunLoop {
  return [[NSRunLoop alloc] init];
}
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode {
  if ([mode isEqual:NSRunLoopCommonModes]) fake::system().timers.push_back(timer->_timer);
}
@end

@implementation NSOperationQueue
- (void)addOperationWithBlock:(void (^)(void))block {
  fake::system().dispatched.push_back([block] { block(); });
}
@end

namespace fake {

bool turn() {
  std::vector<std::function<void()>> now;
  {
    const std::lock_guard lock(system().mutex);
    now.swap(system().performed);
  }
  for (auto& block : now) block();
  return !now.empty();
}

void settle() {
  while (turn()) {
  }
}

void advance(double seconds) {
  const double end = system().now + seconds;
  settle();
  for (;;) {
    auto& timers = system().timers;
    const auto next = std::min_element(
        timers.begin(), timers.end(), [](const Timer& a, const Timer& b) { return a.due < b.due; });
    if (next == timers.end() || next->due > end) break;
    Timer timer = *next;
    system().now = timer.due;
    if (timer.interval > 0) {
      next->due += timer.interval;
    } else {
      timers.erase(next);
    }
    timer.fire();
    settle();
  }
  system().now = end;
}

void drainQueues() {
  while (!system().dispatched.empty()) {
    auto work = std::move(system().dispatched);
    system().dispatched.clear();
    elsewhere([&] {
      for (auto& block : work) block();
    });
  }
}

void elsewhere(const std::function<void()>& work) {
  std::thread thread([&] {
    @autoreleasepool {
      work();
    }
  });
  thread.join();
}

}  // namespace fake

struct __CFRunLoop {};

extern "C" {
const CFRunLoopMode kCFRunLoopCommonModes = (__bridge CFStringRef) @"common modes";
const NSRunLoopMode NSRunLoopCommonModes = @"common modes";

CFRunLoopRef CFRunLoopGetMain(void) {
  static __CFRunLoop loop;
  return &loop;
}
void CFRunLoopPerformBlock(CFRunLoopRef, CFTypeRef mode, void (^block)(void)) {
  if (mode != (CFTypeRef)kCFRunLoopCommonModes) return;
  const std::lock_guard lock(fake::system().mutex);
  fake::system().performed.push_back([block] { block(); });
}
void CFRunLoopWakeUp(CFRunLoopRef) {}

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
  return (dispatch_queue_t)[[NSObject alloc] init];
}
void dispatch_async(dispatch_queue_t, dispatch_block_t block) {
  fake::system().dispatched.push_back([block] { block(); });
}
void dispatch_sync(dispatch_queue_t, __attribute__((noescape)) dispatch_block_t block) {
  fake::drainQueues();
  block();
}
double CACurrentMediaTime(void) { return fake::system().now; }
}
