#pragma once

#include <optional>
#include <string>
#include <vector>

namespace torvane {

struct RunningApplication {
  int processIdentifier = 0;
  std::optional<std::string> bundlePath;  // as Bundle::path() gives it; none where it is not known
};

// The applications that run in the user's session now. Main thread only.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Every one whose bundle has this identifier, this process among them; empty when none can be
  // told.
  [[nodiscard]] virtual std::vector<RunningApplication> withBundleIdentifier(
      const std::string& identifier) const = 0;

  // Ends an application without asking anybody. Returns when it has gone, or after a few seconds
  // at most; one that cannot be ended goes on, which is not reported.
  virtual void forceTerminate(const RunningApplication& application) = 0;
};

}  // namespace torvane
