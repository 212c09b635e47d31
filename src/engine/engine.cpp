#include "engine/engine.h"

#include "engine/engine_requests.h"
#include "engine/python_diagnosis.h"
#include "protocol/constants.h"

namespace torvane {
namespace {

constexpr double kProbeTimeout = 2.0;
constexpr double kFirstProbeDelay = 1.0;
constexpr double kEarlyExit = 5.0;
constexpr double kStopProbeDelay = 0.5;
constexpr double kTerminateDelay = 2.0;
constexpr double kShutdownTimeout = 2.0;
constexpr double kEngineGoodbye = 0.3;

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

}  // namespace

Engine::Engine(const Ports& ports, const MainHop& main, UserDialogs& dialogs, Host& host)
    : ports_(ports),
      main_(main),
      dialogs_(dialogs),
      host_(host),
      log_(ports.files, ports.processInfo.logDirectory()) {}

void Engine::checkStatus() {
  ports_.http.shared().dataTask(
      engineRequest("/api/state", kProbeTimeout), [this, main = main_](const HttpResult& result) {
        const bool running =
            !result.error.has_value() && result.response && result.response->status == 200;
        main.async([this, running] {
          serverRunning = running;
          host_.serverRunningWasLearnt();
        });
      });
}

// A script next to the application overrides the one inside it.
std::optional<std::string> Engine::serverScriptPath() const {
  const std::string beside = folderOf(ports_.bundle.path()) + "/torvane.py";
  if (ports_.files.exists(beside)) return beside;
  return ports_.bundle.pathForResource("torvane", "py");
}

void Engine::startServer() {
  if (serverRunning || (child && child->isRunning())) return;
  const auto script = serverScriptPath();
  if (!script) {
    dialogs_.alert(ports_.texts.scriptMissing);
    return;
  }
  const auto problem =
      pythonProblem(ports_.python, ports_.files, ports_.processes, ports_.backgroundQueue);
  if (problem) {
    dialogs_.alert(*problem);
    return;
  }
  stoppingServer = false;
  launchEngine(*script);
}

void Engine::launchEngine(const std::string& script) {
  ProcessLaunch launch;
  launch.executable = kPython;
  launch.arguments = {script, std::to_string(PORT)};
  launch.environment = ports_.processInfo.environment();
  (*launch.environment)["TORVANE_PARENT_PID"] =
      std::to_string(ports_.processInfo.processIdentifier());

  const double launchedAt = ports_.clock.unixTime();
  auto log = log_.open();
  if (log) {
    log->write(engineStartBanner(launchedAt));
    launch.output = ProcessOutput::file;
    launch.outputFile = log.get();
  }
  const std::uint64_t logOffset = log ? log->offset() : 0;

  auto launched = ports_.processes.launch(
      launch, [this, main = main_, launchedAt, logOffset](
                  const std::shared_ptr<ChildProcess>& process, int status) {
        main.async([this, process, status, launchedAt, logOffset] {
          engineDidExit(process, status, launchedAt, logOffset);
        });
      });
  log.reset();  // the child has descriptors of its own
  if (!launched.process) {
    dialogs_.alert("Could not start the server: " + launched.error);
    return;
  }
  child = std::move(launched.process);
  main_.after(kFirstProbeDelay, [this] { checkStatus(); });
}

void Engine::engineDidExit(const std::shared_ptr<ChildProcess>& process, int status,
                           double launchedAt, std::uint64_t logOffset) {
  if (!child || child != process || stoppingServer) return;
  child = nullptr;
  checkStatus();
  if (status == 0 || ports_.clock.unixTime() - launchedAt >= kEarlyExit) return;
  const std::string tail = log_.tail(logOffset);
  dialogs_.alert(ports_.texts.engineStopped(status, tail.empty() ? "It gave no explanation." : tail,
                                            log_.path()));
}

void Engine::stopServer() {
  stoppingServer = true;
  postShutdown();
  main_.after(kTerminateDelay, [this, process = child] {
    if (process && process->isRunning()) process->terminate();
    child = nullptr;
    checkStatus();
  });
  main_.after(kStopProbeDelay, [this] { checkStatus(); });
}

void Engine::endOwnEngine() {
  if (!child) return;
  stoppingServer = true;
  postShutdown();
  child->terminate();
  ports_.mainQueue.block(kEngineGoodbye);
}

void Engine::postShutdown() {
  HttpRequest request = engineRequest("/api/shutdown", kShutdownTimeout);
  request.method = "POST";
  ports_.http.shared().dataTask(std::move(request), [](const HttpResult&) {});
}

}  // namespace torvane
