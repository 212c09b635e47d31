#include "engine/run_tool.h"

#include "protocol/utf8.h"

namespace torvane {

ToolResult finishTool(ChildProcess& process) {
  const Bytes bytes = process.readOutputToEnd();
  ToolResult result;
  result.status = process.waitUntilExit();
  if (isValidUtf8(asText(bytes))) result.output = asText(bytes);
  return result;
}

ToolResult runTool(ProcessLauncher& processes, const std::string& executable,
                   const std::vector<std::string>& arguments) {
  ProcessLaunch launch;
  launch.executable = executable;
  launch.arguments = arguments;
  launch.output = ProcessOutput::pipe;
  const LaunchResult launched = processes.launch(launch, {});
  if (!launched.process) return {-1, launched.error};
  return finishTool(*launched.process);
}

}  // namespace torvane
