#pragma once

#include "ports/alert.h"

namespace torvane {

class MacAlerts final : public Alerts {
 public:
  int runModal(const AlertContent& content) override;
};

}  // namespace torvane
