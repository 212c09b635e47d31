#pragma once

#include "torvane_ipad/command_table.h"

namespace torvane::ipad {

// The parts of allCommands().
[[nodiscard]] std::vector<CommandSpec> linkCommands();     // finding helpers, being paired
[[nodiscard]] std::vector<CommandSpec> requestCommands();  // to any path
[[nodiscard]] std::vector<CommandSpec> deckCommands();     // what there is to show
[[nodiscard]] std::vector<CommandSpec> showCommands();     // what moves the show
[[nodiscard]] std::vector<CommandSpec> fileCommands();     // what is saved in a file
[[nodiscard]] std::vector<CommandSpec> inkCommands();      // drawing on the slide
[[nodiscard]] std::vector<CommandSpec> measureCommands();  // checks of the helper itself

}  // namespace torvane::ipad
