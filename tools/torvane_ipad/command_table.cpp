#include "torvane_ipad/command_table.h"

#include <algorithm>

#include "torvane_ipad/command_specs.h"

namespace torvane::ipad {
namespace {

std::vector<CommandSpec> joined() {
  std::vector<CommandSpec> all;
  for (auto* part : {&linkCommands, &requestCommands, &deckCommands, &showCommands, &fileCommands,
                     &inkCommands, &measureCommands}) {
    std::ranges::move(part(), std::back_inserter(all));
  }
  return all;
}

bool contains(std::span<const OptionSpec> options, std::string_view name) {
  return std::ranges::find(options, name, &OptionSpec::name) != options.end();
}

}  // namespace

std::span<const CommandSpec> allCommands() {
  static const std::vector<CommandSpec> all = joined();
  return all;
}

const CommandSpec* findCommand(std::string_view name) {
  const auto all = allCommands();
  const auto found = std::ranges::find(all, name, &CommandSpec::name);
  return found == all.end() ? nullptr : &*found;
}

bool takesOption(const CommandSpec& command, std::string_view option) {
  return contains(commonOptions(), option) ||
         (command.reachesHelper && contains(linkOptions(), option)) ||
         std::ranges::find(command.options, option) != command.options.end();
}

}  // namespace torvane::ipad
