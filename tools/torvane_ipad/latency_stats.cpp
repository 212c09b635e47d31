#include "torvane_ipad/latency_stats.h"

#include <algorithm>
#include <cmath>

namespace torvane::ipad {

LatencyStats::Duration LatencyStats::percentile(double percent) const {
  if (samples_.empty()) return Duration::zero();
  const auto count = static_cast<double>(samples_.size());
  const double rank = std::clamp(std::ceil(percent / 100 * count), 1.0, count);
  auto sorted = samples_;
  const auto chosen = sorted.begin() + static_cast<std::ptrdiff_t>(rank) - 1;
  std::nth_element(sorted.begin(), chosen, sorted.end());
  return *chosen;
}

}  // namespace torvane::ipad
