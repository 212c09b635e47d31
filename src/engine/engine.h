#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "engine/engine_log.h"
#include "ports/background_queue.h"
#include "ports/bundle.h"
#include "ports/child_process.h"
#include "ports/clock.h"
#include "ports/desktop_texts.h"
#include "ports/http_session.h"
#include "ports/main_hop.h"
#include "ports/process_info.h"
#include "ports/user_dialogs.h"

namespace torvane {

struct PythonSystem;

// Starts, watches and stops the engine, and tells the user when it dies at once. Whether one runs
// is learnt only by asking it, so one that was started by hand counts as well. Main thread only.
class Engine {
 public:
  struct Ports {
    Bundle& bundle;
    FileSystem& files;
    ProcessLauncher& processes;
    ProcessInfo& processInfo;
    BackgroundQueue& backgroundQueue;
    MainQueue& mainQueue;
    HttpSessions& http;
    Clock& clock;
    const PythonSystem& python;
    const DesktopTexts& texts;
  };

  class Host {
   public:
    virtual void serverRunningWasLearnt() = 0;  // after each probe, whether it is news or not

   protected:
    ~Host() = default;
  };

  Engine(const Ports& ports, const MainHop& main, UserDialogs& dialogs, Host& host);

  [[nodiscard]] bool isRunning() const { return serverRunning; }
  void checkStatus();

  // Does nothing while one runs. Blocks for as long as Python's probe may take.
  void startServer();
  void stopServer();

  // For the program's end: the engine that was started here is asked and told to end.
  void endOwnEngine();

 private:
  [[nodiscard]] std::optional<std::string> serverScriptPath() const;
  void launchEngine(const std::string& script);
  void engineDidExit(const std::shared_ptr<ChildProcess>& process, int status, double launchedAt,
                     std::uint64_t logOffset);
  void postShutdown();

  const Ports ports_;
  const MainHop main_;
  UserDialogs& dialogs_;
  Host& host_;
  const EngineLog log_;

  bool serverRunning = false;
  bool stoppingServer = false;
  std::shared_ptr<ChildProcess> child;  // the engine this helper started, while it is alive
};

}  // namespace torvane
