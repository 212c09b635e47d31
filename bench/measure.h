#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace torvane::bench {

using Clock = std::chrono::steady_clock;

[[nodiscard]] inline double microsecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// Keeps the compiler from leaving out what made `value`.
template <typename T>
void keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// The value that `share` of all samples do not exceed; 0.5 is the median.
[[nodiscard]] inline double percentile(std::vector<double> samples, double share) {
  if (samples.empty()) return 0;
  std::sort(samples.begin(), samples.end());
  const auto last = static_cast<double>(samples.size() - 1);
  return samples[static_cast<std::size_t>(share * last + 0.5)];
}

// Two pieces of work measured in turn, so that a machine that changes its pace changes both.
struct Pair {
  double work;   // microseconds a call, median over the rounds
  double floor;  // likewise
  [[nodiscard]] double ratio() const { return work / floor; }
};

// Runs each for about a tenth of a second altogether.
template <typename Work, typename Floor>
[[nodiscard]] Pair compare(Work work, Floor floor) {
  constexpr int kRounds = 25;
  const auto callsIn = [](auto& call) {
    std::size_t calls = 1;
    for (;; calls *= 2) {
      const auto start = Clock::now();
      for (std::size_t i = 0; i < calls; ++i) call();
      if (microsecondsSince(start) > 4000) return calls;
    }
  };
  const auto once = [](auto& call, std::size_t calls) {
    const auto start = Clock::now();
    for (std::size_t i = 0; i < calls; ++i) call();
    return microsecondsSince(start) / static_cast<double>(calls);
  };
  const std::size_t workCalls = callsIn(work);
  const std::size_t floorCalls = callsIn(floor);
  std::vector<double> workTimes;
  std::vector<double> floorTimes;
  for (int round = 0; round < kRounds; ++round) {
    workTimes.push_back(once(work, workCalls));
    floorTimes.push_back(once(floor, floorCalls));
  }
  return {percentile(std::move(workTimes), 0.5), percentile(std::move(floorTimes), 0.5)};
}

}  // namespace torvane::bench
