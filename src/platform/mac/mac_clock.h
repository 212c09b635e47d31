#pragma once

#include "ports/clock.h"

namespace torvane {

class MacClock final : public Clock {
 public:
  [[nodiscard]] double unixTime() const override;
  [[nodiscard]] double mediaTime() const override;
};

}  // namespace torvane
