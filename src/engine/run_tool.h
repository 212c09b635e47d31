#pragma once

#include <string>
#include <vector>

#include "ports/child_process.h"

namespace torvane {

struct ToolResult {
  int status = -1;     // the exit status; -1 when the tool could not be started
  std::string output;  // standard output and error together; empty when it is not UTF-8
};

// Runs a command-line tool and waits for it. Any thread; blocks the caller. A tool that cannot be
// started gives status -1 and the reason as output.
[[nodiscard]] ToolResult runTool(ProcessLauncher& processes, const std::string& executable,
                                 const std::vector<std::string>& arguments);

// The second half of runTool(), for a tool that was launched with ProcessOutput::pipe.
[[nodiscard]] ToolResult finishTool(ChildProcess& process);

}  // namespace torvane
