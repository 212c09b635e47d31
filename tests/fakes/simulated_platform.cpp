#include "fakes/simulated_platform.h"

#include <algorithm>

namespace torvane {

SimulatedPlatform::SimulatedPlatform() {
  defaults.stored["didShowWelcome"] = true;
  files.put("/Library/Developer/CommandLineTools/usr/bin/python3", "");
  http.save = [this](const std::string& path, ByteView body) {
    if (files.exists(path) || files.unwritable.count(path) != 0) return false;
    files.put(path, std::string(asText(body)));
    return true;
  };
  processes.program = [](const ProcessLaunch& launch) {
    const bool isProbe = !launch.arguments.empty() && launch.arguments.front() == "--version";
    return isProbe ? FakeProgram{"Python 3.11.2\n", 0, ""} : FakeProgram{};
  };
}

SimulatedPlatform::~SimulatedPlatform() = default;

void SimulatedPlatform::runEngine() {
  http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200, "{}")}; };
}

CallLog SimulatedPlatform::logged(const std::vector<std::string>& names) const {
  CallLog found;
  for (const auto& call : log) {
    if (std::find(names.begin(), names.end(), call) != names.end()) found.push_back(call);
  }
  return found;
}

}  // namespace torvane
