// Starting and stopping the engine, and telling the user when it dies at once.
// Events: the start-up delay, "Start Server", "Stop Server", the engine's exit. Fields: child,
// stoppingServer. Ports: Bundle, FileSystem, ProcessLauncher, ProcessInfo, HttpSession, Clock.

#include "app/bridge_delegate.h"
#include "protocol/constants.h"

namespace torvane {
namespace {

constexpr double kFirstProbeDelay = 1.0;
constexpr double kEarlyExit = 5.0;
constexpr double kStopProbeDelay = 0.5;
constexpr double kTerminateDelay = 2.0;
constexpr double kShutdownTimeout = 2.0;

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

}  // namespace

// A script next to the application overrides the one inside it.
std::optional<std::string> BridgeDelegate::serverScriptPath() const {
  const std::string beside = folderOf(platform_.bundle.path()) + "/torvane.py";
  if (platform_.files.exists(beside)) return beside;
  return platform_.bundle.pathForResource("torvane", "py");
}

void BridgeDelegate::startServer() {
  assertMainThread();
  if (serverRunning || (child && child->isRunning())) return;
  const auto script = serverScriptPath();
  if (!script) {
    alert(platform_.texts.scriptMissing);
    return;
  }
  const auto problem = pythonProblem(platform_.python, platform_.files, platform_.processes,
                                     platform_.backgroundQueue);
  if (problem) {
    alert(*problem);
    return;
  }
  stoppingServer = false;
  launchEngine(*script);
}

void BridgeDelegate::launchEngine(const std::string& script) {
  ProcessLaunch launch;
  launch.executable = kPython;
  launch.arguments = {script, std::to_string(PORT)};
  launch.environment = platform_.processInfo.environment();
  (*launch.environment)["TORVANE_PARENT_PID"] =
      std::to_string(platform_.processInfo.processIdentifier());

  const double launchedAt = platform_.clock.unixTime();
  auto log = engineLog_.open();
  if (log) {
    log->write(engineStartBanner(launchedAt));
    launch.output = ProcessOutput::file;
    launch.outputFile = log.get();
  }
  const std::uint64_t logOffset = log ? log->offset() : 0;

  auto launched = platform_.processes.launch(
      launch, [this, main = main_, launchedAt, logOffset](
                  const std::shared_ptr<ChildProcess>& process, int status) {
        main.async([this, process, status, launchedAt, logOffset] {
          engineDidExit(process, status, launchedAt, logOffset);
        });
      });
  log.reset();  // the child has descriptors of its own
  if (!launched.process) {
    alert("Could not start the server: " + launched.error);
    return;
  }
  child = std::move(launched.process);
  main_.after(kFirstProbeDelay, [this] { checkStatus(); });
}

void BridgeDelegate::engineDidExit(const std::shared_ptr<ChildProcess>& process, int status,
                                   double launchedAt, std::uint64_t logOffset) {
  assertMainThread();
  if (!child || child != process || stoppingServer) return;
  child = nullptr;
  checkStatus();
  if (status == 0 || platform_.clock.unixTime() - launchedAt >= kEarlyExit) return;
  const std::string tail = engineLog_.tail(logOffset);
  alert(platform_.texts.engineStopped(status, tail.empty() ? "It gave no explanation." : tail,
                                      engineLog_.path()));
}

void BridgeDelegate::stopServer() {
  assertMainThread();
  stoppingServer = true;
  postShutdown();
  main_.after(kTerminateDelay, [this, process = child] {
    if (process && process->isRunning()) process->terminate();
    child = nullptr;
    checkStatus();
  });
  main_.after(kStopProbeDelay, [this] { checkStatus(); });
}

void BridgeDelegate::postShutdown() {
  HttpRequest request = engineRequest("/api/shutdown", kShutdownTimeout);
  request.method = "POST";
  platform_.http.shared().dataTask(std::move(request), [](const HttpResult&) {});
}

}  // namespace torvane
