#pragma once

#include <cstddef>
#include <vector>

#include "engine/engine.h"
#include "fakes/part_test.h"

namespace torvane {

// The engine's part of the program.
class EngineTest : public PartTest, private Engine::Host {
 protected:
  Engine engine{{.bundle = platform.ports.bundle,
                 .files = platform.ports.files,
                 .processes = platform.ports.processes,
                 .processInfo = platform.ports.processInfo,
                 .backgroundQueue = platform.ports.backgroundQueue,
                 .mainQueue = platform.ports.mainQueue,
                 .http = platform.ports.http,
                 .clock = platform.ports.clock,
                 .python = platform.ports.python,
                 .texts = platform.ports.texts},
                main,
                *this,
                *this};
  int timesLearnt = 0;  // whether the engine runs

  // The engines launched so far, without the probes for Python.
  std::vector<FakeProcessLauncher::Launched> engines() {
    std::vector<FakeProcessLauncher::Launched> found;
    for (const auto& entry : platform.processes.launched) {
      if (entry.launch.arguments.size() == 2) found.push_back(entry);
    }
    return found;
  }

  // Whether a start starts one now, and no child stands in the way; it is started then.
  bool starts() {
    const std::size_t before = engines().size();
    engine.startServer();
    return engines().size() > before;
  }

  // Asks the engine, which answers with this status.
  void learn(int status) {
    platform.http.server = [status](const HttpRequest&) {
      return FakeAnswer{httpResult(status), 0};
    };
    engine.checkStatus();
    platform.time.runDue();
  }

 private:
  void serverRunningWasLearnt() override { ++timesLearnt; }
};

}  // namespace torvane
