#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ports/background_queue.h"
#include "ports/child_process.h"
#include "ports/file_system.h"

namespace torvane {

// What a working Python looks like on a desktop, and what to tell the user when it does not work.
struct PythonSystem {
  std::vector<std::string> evidence;   // Python can only run where one of these files exists
  std::string missing;                 // none of them does
  std::optional<std::string> licence;  // the probe's output speaks of a license
  std::string refused;                 // any other failure; the probe's output is put behind it
};

extern const PythonSystem kMacPython;
extern const PythonSystem kLinuxPython;

inline constexpr const char* kPython = "/usr/bin/python3";

// None when Python runs, else a message for the user that says what to do. Blocks up to 5 s.
[[nodiscard]] std::optional<std::string> pythonProblem(const PythonSystem& system,
                                                       const FileSystem& files,
                                                       ProcessLauncher& processes,
                                                       BackgroundQueue& backgroundQueue);

}  // namespace torvane
