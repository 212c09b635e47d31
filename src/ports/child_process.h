#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/file_system.h"
#include "protocol/bytes.h"

namespace torvane {

// A started program. Any thread. It is always reaped, also when this object goes first.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  [[nodiscard]] virtual bool isRunning() const = 0;

  // The platform's polite termination signal; nothing once the process has exited.
  virtual void terminate() = 0;

  // Ends the process whatever it does; nothing once it has exited.
  virtual void kill() = 0;

  // What the child wrote to its pipe, standard output and error in the order written; blocks
  // until it has exited or closed the pipe, and no longer: a grandchild that keeps the pipe open
  // is not waited for. Only for ProcessOutput::pipe, once. At most 16 MiB are kept.
  [[nodiscard]] virtual Bytes readOutputToEnd() = 0;

  // Blocks until the process has exited; its exit code, or the number of the signal that ended it.
  virtual int waitUntilExit() = 0;
};

enum class ProcessOutput { nullDevice, pipe, file };

struct ProcessLaunch {
  std::string executable;              // absolute path; no search, no shell
  std::vector<std::string> arguments;  // without the program's own name
  std::optional<std::map<std::string, std::string>> environment;  // none: inherited
  ProcessOutput output = ProcessOutput::nullDevice;  // standard output and error together
  FileHandle* outputFile = nullptr;                  // for ProcessOutput::file
};

struct LaunchResult {
  std::shared_ptr<ChildProcess> process;  // null when launching failed
  std::string error;                      // then: a description for the user
};

// `status` as waitUntilExit() gives it. Called once, on a background thread.
using TerminationHandler =
    std::function<void(const std::shared_ptr<ChildProcess>& process, int status)>;

class ProcessLauncher {
 public:
  virtual ~ProcessLauncher() = default;

  // Standard input is the null device; no other descriptor of this process reaches the child.
  // `onExit` may be empty. Any thread.
  [[nodiscard]] virtual LaunchResult launch(const ProcessLaunch& launch,
                                            TerminationHandler onExit) = 0;
};

}  // namespace torvane
