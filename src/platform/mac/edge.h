#pragma once

#import <Foundation/Foundation.h>

#include <exception>
#include <utility>

namespace torvane {

// Runs what the system calls of ours. No exception may unwind through the system's own frames: it
// is written to the system's log, and what was to be done is lost. What is autoreleased goes at
// once, for the main run loop empties its pool only when the user does something.
template <typename Work>
void atEdge(Work&& work) noexcept {
  @autoreleasepool {
    try {
      std::forward<Work>(work)();
    } catch (const std::exception& error) {
      NSLog(@"Torvane P2P Helper: %s", error.what());
    } catch (...) {
      NSLog(@"Torvane P2P Helper: an exception of unknown type");
    }
  }
}

}  // namespace torvane
