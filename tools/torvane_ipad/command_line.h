#pragma once

#include <span>
#include <string>

#include "torvane_ipad/options.h"

namespace torvane::ipad {

struct CommandLine {
  Options options;
  std::string error;  // empty: everything was understood
};

// `arguments` without the program's name. A call for help or the version
// needs nothing else to be right.
[[nodiscard]] CommandLine parseCommandLine(std::span<const std::string> arguments);

}  // namespace torvane::ipad
