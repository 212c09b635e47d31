#pragma once

#include <algorithm>

namespace torvane {

// Lets `capacity` events through at once and `perSecond` of them in the long run.
class TokenBucket {
 public:
  TokenBucket(double capacity, double perSecond)
      : capacity_(capacity), perSecond_(perSecond), tokens_(capacity) {}

  // `now` in seconds, never smaller than the time before.
  [[nodiscard]] bool hasToken(double now) {
    tokens_ = std::min(capacity_, tokens_ + (now - filledAt_) * perSecond_);
    filledAt_ = now;
    return tokens_ >= 1;
  }

  // Takes a token that hasToken() has just reported.
  void take() { tokens_ -= 1; }

 private:
  double capacity_;
  double perSecond_;
  double tokens_;
  double filledAt_ = 0;
};

}  // namespace torvane
