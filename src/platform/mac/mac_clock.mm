#include "platform/mac/mac_clock.h"

#import <QuartzCore/QuartzCore.h>

#include <chrono>

namespace torvane {

double MacClock::unixTime() const {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(sinceEpoch).count();
}

double MacClock::mediaTime() const { return CACurrentMediaTime(); }

}  // namespace torvane
