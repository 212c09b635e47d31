#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

namespace torvane::ipad {

// Latencies of answered requests.
class LatencyStats {
 public:
  using Duration = std::chrono::nanoseconds;

  void add(Duration latency) { samples_.push_back(latency); }
  void add(const LatencyStats& other) {
    samples_.insert(samples_.end(), other.samples_.begin(), other.samples_.end());
  }
  [[nodiscard]] std::size_t count() const { return samples_.size(); }

  // The smallest latency that at least `percent` of the samples do not exceed (nearest rank);
  // zero without samples.
  [[nodiscard]] Duration percentile(double percent) const;
  [[nodiscard]] Duration max() const { return percentile(100); }

 private:
  std::vector<Duration> samples_;
};

}  // namespace torvane::ipad
