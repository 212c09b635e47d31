#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fakes/simulated_time.h"
#include "ports/child_process.h"

namespace torvane {

// A child that runs until a test ends it, or for as long as its script says.
class FakeChildProcess final : public ChildProcess,
                               public std::enable_shared_from_this<FakeChildProcess> {
 public:
  FakeChildProcess(SimulatedTime& time, TerminationHandler onExit)
      : time_(time), onExit_(std::move(onExit)) {}

  std::string output;
  bool obeysTerminate = true;
  int terminations = 0;
  std::function<void()> onTerminate;

  void exit(int status) {
    if (status_) return;
    status_ = status;
    time_.scheduleBackground(0, [self = shared_from_this(), status] {
      if (self->onExit_) self->onExit_(self, status);
    });
  }

  [[nodiscard]] bool isRunning() const override { return !status_; }
  void terminate() override {
    ++terminations;
    if (onTerminate) onTerminate();
    if (obeysTerminate) exit(15);
  }
  void kill() override { exit(9); }
  [[nodiscard]] Bytes readOutputToEnd() override {
    waitUntilExit();
    return toBytes(output);
  }
  int waitUntilExit() override {
    for (int tenths = 0; !status_ && tenths < 36000; ++tenths) {
      time_.isMainThread() ? time_.advanceWhileMainIsHeld(0.1) : time_.advance(0.1);
    }
    return status_.value_or(-1);
  }

 private:
  SimulatedTime& time_;
  TerminationHandler onExit_;
  std::optional<int> status_;
};

// What a program does when it is launched.
struct FakeProgram {
  std::string output;
  std::optional<int> exitStatus;  // absent: runs until it is ended
  std::string launchError;        // not empty: cannot be launched
};

class FakeProcessLauncher final : public ProcessLauncher {
 public:
  explicit FakeProcessLauncher(SimulatedTime& time) : time_(time) {}

  struct Launched {
    ProcessLaunch launch;
    std::shared_ptr<FakeChildProcess> process;
  };
  // Chooses what a launch does; the default runs until it is ended.
  std::function<FakeProgram(const ProcessLaunch&)> program;
  std::vector<Launched> launched;

  // The launches of one executable with this first argument.
  [[nodiscard]] std::vector<Launched> launchesWith(const std::string& firstArgument) const {
    std::vector<Launched> found;
    for (const auto& entry : launched) {
      const auto& arguments = entry.launch.arguments;
      if (!arguments.empty() && arguments.front() == firstArgument) found.push_back(entry);
    }
    return found;
  }

  [[nodiscard]] LaunchResult launch(const ProcessLaunch& launch,
                                    TerminationHandler onExit) override {
    const FakeProgram does = program ? program(launch) : FakeProgram{};
    if (!does.launchError.empty()) return {nullptr, does.launchError};
    auto process = std::make_shared<FakeChildProcess>(time_, std::move(onExit));
    process->output = does.output;
    if (launch.outputFile != nullptr) launch.outputFile->write(does.output);
    if (does.exitStatus) process->exit(*does.exitStatus);
    launched.push_back({launch, process});
    return {process, {}};
  }

 private:
  SimulatedTime& time_;
};

}  // namespace torvane
