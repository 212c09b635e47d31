#include "peer/failed_proofs.h"

#include <algorithm>

namespace torvane {
namespace {

constexpr double kMinute = 60;  // seconds
constexpr std::size_t kMostOrigins = 1024;

bool isRecent(double failedAt, double now) {
  return now - failedAt < kMinute;
}

}  // namespace

bool FailedProofs::areTooMany(const std::string& origin, double now) const {
  const auto known = failedAt_.find(origin);
  if (known == failedAt_.end()) return false;
  const auto& times = known->second;
  const auto recent = std::count_if(times.begin(), times.end(),
                                    [now](double failedAt) { return isRecent(failedAt, now); });
  return static_cast<std::size_t>(recent) >= most_;
}

void FailedProofs::add(const std::string& origin, double now) {
  if (failedAt_.size() >= kMostOrigins && !failedAt_.contains(origin)) {
    std::erase_if(failedAt_,
                  [now](const auto& entry) { return !isRecent(entry.second.back(), now); });
    if (failedAt_.size() >= kMostOrigins) failedAt_.erase(failedAt_.begin());
  }
  auto& times = failedAt_[origin];
  while (!times.empty() && (times.size() >= most_ || !isRecent(times.front(), now))) {
    times.pop_front();
  }
  times.push_back(now);
}

}  // namespace torvane
