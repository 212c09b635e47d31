#include "platform/linux/system_clock.h"

#include <chrono>

namespace torvane {
namespace {

template <typename C>
double secondsSinceEpochOf() {
  return std::chrono::duration<double>(C::now().time_since_epoch()).count();
}

}  // namespace

double SystemClock::unixTime() const {
  return secondsSinceEpochOf<std::chrono::system_clock>();
}

double SystemClock::mediaTime() const {
  return secondsSinceEpochOf<std::chrono::steady_clock>();
}

}  // namespace torvane
