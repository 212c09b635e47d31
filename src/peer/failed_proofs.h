#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <string>

namespace torvane {

// How often the proofs of each origin failed in the last minute, so that an origin whose proofs
// keep failing is not listened to for a while. Times are seconds of a clock that does not go back.
class FailedProofs {
 public:
  explicit FailedProofs(std::size_t mostPerMinute) : most_(mostPerMinute) {}

  [[nodiscard]] bool areTooMany(const std::string& origin, double now) const;
  void add(const std::string& origin, double now);

 private:
  std::size_t most_;
  std::map<std::string, std::deque<double>> failedAt_;  // by origin; never an empty one
};

}  // namespace torvane
