#include "engine/abandonable_processes.h"

#include <gtest/gtest.h>

#include "engine/run_tool.h"
#include "fakes/fake_processes.h"

namespace torvane {
namespace {

class AbandonedProcesses : public testing::Test {
 protected:
  SimulatedTime time;
  FakeProcessLauncher launcher{time};
  AbandonableProcesses processes{launcher};
};

TEST_F(AbandonedProcesses, RunLikeOthersUntilThen) {
  launcher.program = [](const ProcessLaunch&) { return FakeProgram{"text", 7, ""}; };
  const ToolResult result = runTool(processes, "/usr/bin/tool", {"-a"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output, "text");
  EXPECT_FALSE(processes.isAbandoned());
}

TEST_F(AbandonedProcesses, EndWhateverTheyDo) {
  const auto launched = processes.launch({}, {});
  launcher.launched[0].process->obeysTerminate = false;
  processes.abandon();
  EXPECT_FALSE(launched.process->isRunning());
  EXPECT_TRUE(processes.isAbandoned());
}

TEST_F(AbandonedProcesses, AreFollowedByNoOther) {
  processes.abandon();
  EXPECT_EQ(runTool(processes, "/usr/bin/tool", {}).status, -1);
  EXPECT_TRUE(launcher.launched.empty());
}

}  // namespace
}  // namespace torvane
