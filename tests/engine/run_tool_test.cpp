#include "engine/run_tool.h"

#include <gtest/gtest.h>

#include "fakes/simulated_platform.h"

namespace torvane {
namespace {

class RunTool : public testing::Test {
 protected:
  SimulatedPlatform platform;

  ToolResult run(FakeProgram program) {
    platform.processes.program = [program](const ProcessLaunch&) { return program; };
    return runTool(platform.processes, "/usr/bin/tool", {"-a", "b c"});
  }
};

TEST_F(RunTool, GivesStatusAndOutput) {
  const auto result = run({"out and err\n", 3, ""});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "out and err\n");
}

TEST_F(RunTool, PassesItsArgumentsAndItsOwnEnvironmentOn) {
  run({"", 0, ""});
  const auto& launch = platform.processes.launched.at(0).launch;
  EXPECT_EQ(launch.executable, "/usr/bin/tool");
  EXPECT_EQ(launch.arguments, (std::vector<std::string>{"-a", "b c"}));
  EXPECT_FALSE(launch.environment.has_value());
}

TEST_F(RunTool, ToolThatCannotStartGivesMinusOneAndTheReason) {
  const auto result = run({"", std::nullopt, "No such file or directory"});
  EXPECT_EQ(result.status, -1);
  EXPECT_EQ(platform.time.now(), 0);
  EXPECT_EQ(result.output, "No such file or directory");
}

TEST_F(RunTool, OutputThatIsNotUtf8IsEmpty) {
  const auto result = run({"\xC0\x80", 0, ""});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

}  // namespace
}  // namespace torvane
