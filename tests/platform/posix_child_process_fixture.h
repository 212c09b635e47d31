#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>

#include "platform/posix/posix_child_process.h"

namespace torvane {

using Environment = std::map<std::string, std::string>;

inline ProcessLaunch shell(const std::string& script, ProcessOutput output = ProcessOutput::pipe) {
  ProcessLaunch launch;
  launch.executable = "/bin/sh";
  launch.arguments = {"-c", script};
  launch.output = output;
  return launch;
}

class PosixChildProcessTest : public testing::Test {
 protected:
  static constexpr std::chrono::seconds kPatience{30};

  std::shared_ptr<ChildProcess> start(const ProcessLaunch& launch,
                                      TerminationHandler onExit = nullptr) {
    LaunchResult result = launcher.launch(launch, std::move(onExit));
    EXPECT_NE(result.process, nullptr) << result.error;
    return result.process;
  }

  std::string outputOf(const ProcessLaunch& launch) {
    const auto process = start(launch);
    const std::string output(asText(process->readOutputToEnd()));
    process->waitUntilExit();
    return output;
  }

  PosixProcessLauncher launcher;
};

}  // namespace torvane
