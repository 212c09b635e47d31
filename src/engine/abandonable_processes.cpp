#include "engine/abandonable_processes.h"

namespace torvane {

void AbandonableProcesses::abandon() {
  const std::lock_guard lock(mutex_);
  isAbandoned_ = true;
  if (last_) last_->kill();
}

bool AbandonableProcesses::isAbandoned() const {
  const std::lock_guard lock(mutex_);
  return isAbandoned_;
}

// Nothing can be launched between the look and the end of abandon().
LaunchResult AbandonableProcesses::launch(const ProcessLaunch& launch, TerminationHandler onExit) {
  const std::lock_guard lock(mutex_);
  if (isAbandoned_) return {nullptr, "It is not wanted any more."};
  LaunchResult result = launcher_.launch(launch, std::move(onExit));
  last_ = result.process;
  return result;
}

}  // namespace torvane
