#pragma once

#include <memory>
#include <mutex>

#include "ports/child_process.h"

namespace torvane {

// Launches the programs of one piece of work, one after the other. Another thread may abandon that
// work at any time, and then need not wait for what hangs.
class AbandonableProcesses final : public ProcessLauncher {
 public:
  explicit AbandonableProcesses(ProcessLauncher& launcher) : launcher_(launcher) {}

  // Ends the program that was launched last; no other can be launched from now on. Any thread.
  void abandon();
  [[nodiscard]] bool isAbandoned() const;

  [[nodiscard]] LaunchResult launch(const ProcessLaunch& launch,
                                    TerminationHandler onExit) override;

 private:
  ProcessLauncher& launcher_;
  mutable std::mutex mutex_;
  std::shared_ptr<ChildProcess> last_;
  bool isAbandoned_ = false;
};

}  // namespace torvane
