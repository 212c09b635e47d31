#pragma once

#include <span>
#include <string>

namespace torvane::show {

struct CommandLine {
  enum class Mode { kShow, kAnswer, kHelp, kVersion };

  Mode mode = Mode::kShow;
  int page = 1;
  bool hasDialog = false;  // what goes wrong is told in a dialog as well
  std::string file;        // empty with hasDialog only: to be asked for
  std::string error;       // empty: everything was understood
};

// `arguments` without the program's name.
[[nodiscard]] CommandLine parseCommandLine(std::span<const std::string> arguments);

extern const char* const kHelp;

}  // namespace torvane::show
