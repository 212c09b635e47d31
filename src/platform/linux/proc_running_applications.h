#pragma once

#include "ports/running_applications.h"

namespace torvane {

// Application folders (FolderBundle) that a process of the same user and the same session runs
// from, told by the file that the process executes. Two processes are of one session when both
// have the same runtime folder.
class ProcRunningApplications final : public RunningApplications {
 public:
  [[nodiscard]] std::vector<RunningApplication> withBundleIdentifier(
      const std::string& identifier) const override;

  // A signal to end, on which a helper says goodbye to its engine; the one that cannot be refused
  // after two seconds without an end.
  void forceTerminate(const RunningApplication& application) override;
};

}  // namespace torvane
