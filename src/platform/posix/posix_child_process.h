#pragma once

#include <memory>

#include "ports/child_process.h"

namespace torvane {

// Starts programs with posix_spawn; a thread for each running child waits for its exit, and calls
// the termination handler. Once the launcher is destroyed no handler runs, nor is one running;
// children that are still alive are left alone. Not to be destroyed inside a handler.
class PosixProcessLauncher final : public ProcessLauncher {
 public:
  PosixProcessLauncher();
  ~PosixProcessLauncher() override;
  PosixProcessLauncher(const PosixProcessLauncher&) = delete;
  PosixProcessLauncher& operator=(const PosixProcessLauncher&) = delete;

  [[nodiscard]] LaunchResult launch(const ProcessLaunch& launch,
                                    TerminationHandler onExit) override;

 private:
  class HandlerGate;
  std::shared_ptr<HandlerGate> gate_;
};

}  // namespace torvane
