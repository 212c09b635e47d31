#include "engine/python_diagnosis.h"

#include <algorithm>

#include "engine/run_tool.h"
#include "protocol/utf8.h"

namespace torvane {

const PythonSystem kMacPython = {
    {"/Library/Developer/CommandLineTools/usr/bin/python3", "/Applications/Xcode.app"},
    "One more step: macOS needs a small free Apple component (the “Command Line Tools”) to run the "
    "PowerPoint server.\n\nOpen Terminal, run `xcode-select --install`, click Install and let it "
    "finish, then choose “Start Server” from this app's menu bar icon. (If macOS offers to install "
    "it for you, that works too.)",
    "Xcode's licence agreement needs accepting again. An Xcode update re-armed it, and until it is "
    "accepted macOS refuses to run Python, so the PowerPoint server can't start.\n\nOpen Terminal, "
    "run `sudo xcodebuild -license accept`, enter your password, then choose “Start Server” from "
    "this app's menu bar icon.",
    "macOS refused to run Python, so the PowerPoint server can't "
    "start.\n\n/usr/bin/python3 --version said:\n"};

const PythonSystem kLinuxPython = {
    {kPython},
    "One more step: the presentation server needs Python 3, and /usr/bin/python3 is not "
    "there.\n\nOpen a terminal, run `sudo apt install python3` (or install the package “python3” "
    "in "
    "your system's own way), then choose “Start Server” from this app's status icon.",
    std::nullopt,
    "This computer refused to run Python, so the presentation server can't "
    "start.\n\n/usr/bin/python3 --version said:\n"};

namespace {

constexpr double kProbeTimeout = 5;
constexpr std::size_t kLongestOutputShown = 2000;

std::string lowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
  const auto first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

bool hasEvidence(const PythonSystem& system, const FileSystem& files) {
  return std::any_of(system.evidence.begin(), system.evidence.end(),
                     [&](const std::string& path) { return files.exists(path); });
}

std::optional<std::string> diagnosis(const PythonSystem& system, const ToolResult& probe) {
  if (probe.status == 0) return std::nullopt;
  if (system.licence && lowerCased(probe.output).find("license") != std::string::npos) {
    return *system.licence;
  }
  return system.refused + std::string(utf8Prefix(trimmed(probe.output), kLongestOutputShown));
}

}  // namespace

std::optional<std::string> pythonProblem(const PythonSystem& system, const FileSystem& files,
                                         ProcessLauncher& processes,
                                         BackgroundQueue& backgroundQueue) {
  if (!hasEvidence(system, files)) return system.missing;

  ProcessLaunch launch;
  launch.executable = kPython;
  launch.arguments = {"--version"};
  launch.output = ProcessOutput::pipe;
  const LaunchResult launched = processes.launch(launch, {});
  if (!launched.process) return "Could not run /usr/bin/python3: " + launched.error;

  // A stub may sit waiting on an installer's dialog for ever.
  backgroundQueue.after(kProbeTimeout, [process = launched.process] { process->terminate(); });
  return diagnosis(system, finishTool(*launched.process));
}

}  // namespace torvane
