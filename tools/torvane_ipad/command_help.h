#pragma once

#include <string>

#include "torvane_ipad/command_table.h"

namespace torvane::ipad {

[[nodiscard]] std::string generalHelp();
[[nodiscard]] std::string commandHelp(const CommandSpec& command);

}  // namespace torvane::ipad
