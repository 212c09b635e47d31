#pragma once

#include <cstddef>
#include <optional>
#include <set>

#include "protocol/bytes.h"
#include "protocol/token_bucket.h"

namespace torvane {

// Keeps a flood of invitations from reaching the program: 30 at once and in a minute, and 64
// waiting for their answer. Devices accepted before in this run pass.
class InvitationValve {
 public:
  // `now`: seconds of a clock that does not go back. Whoever is let in gives endWaiting() later.
  [[nodiscard]] bool letIn(const std::optional<Bytes>& context, double now) {
    if (waiting_ >= kMostWaiting) return false;
    if (!context || !accepted_.contains(*context)) {
      if (!strangers_.hasToken(now)) return false;
      strangers_.take();
    }
    ++waiting_;
    return true;
  }

  void endWaiting(const std::optional<Bytes>& context, bool wasAccepted) {
    --waiting_;
    if (wasAccepted && context && accepted_.size() < kMostAccepted) accepted_.insert(*context);
  }

 private:
  static constexpr std::size_t kMostWaiting = 64;
  static constexpr std::size_t kMostAccepted = 1024;

  TokenBucket strangers_{30, 0.5};
  std::size_t waiting_ = 0;
  std::set<Bytes> accepted_;
};

}  // namespace torvane
