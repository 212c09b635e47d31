#pragma once

#include "ports/running_applications.h"

namespace torvane {

class MacRunningApplications final : public RunningApplications {
 public:
  [[nodiscard]] std::vector<RunningApplication> withBundleIdentifier(
      const std::string& identifier) const override;
  void forceTerminate(const RunningApplication& application) override;
};

}  // namespace torvane
