#pragma once

namespace torvane {

// Both clocks may be read on any thread.
class Clock {
 public:
  virtual ~Clock() = default;

  // Wall clock: seconds since 1970-01-01 00:00:00 UTC.
  [[nodiscard]] virtual double unixTime() const = 0;

  // Media clock: seconds, monotonic, of an arbitrary origin.
  [[nodiscard]] virtual double mediaTime() const = 0;
};

}  // namespace torvane
