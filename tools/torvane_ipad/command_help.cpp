#include "torvane_ipad/command_help.h"

#include <algorithm>

namespace torvane::ipad {
namespace {

constexpr std::size_t kColumn = 22;

std::string padded(std::string text) {
  text.resize(std::max(text.size() + 1, kColumn), ' ');
  return text;
}

// "  --port PORT         the helper's port", further lines under the first.
std::string optionHelp(const OptionSpec& option) {
  std::string head = "  --" + std::string(option.name);
  if (!option.argument.empty()) head += " " + std::string(option.argument);
  std::string text = padded(head);
  for (const char c : option.help) {
    text += c;
    if (c == '\n') text.append(kColumn, ' ');
  }
  return text + "\n";
}

std::string optionsHelp(const std::string& heading, std::span<const OptionSpec> options) {
  std::string text = "\n" + heading + ":\n";
  for (const OptionSpec& option : options) text += optionHelp(option);
  return text;
}

std::string linkHelp() {
  return optionsHelp("Options of every command that reaches a helper", linkOptions());
}

std::string commonHelp() {
  return optionsHelp("Options of every command", commonOptions());
}

constexpr const char* kExitHelp =
    "Ends with 0 when all went well, 1 when the helper, the engine or the presentation\n"
    "program did not do it, 2 when the command line or a local file is wrong, 3 when no\n"
    "trusted helper could be reached or the connection was lost.\n";

}  // namespace

std::string generalHelp() {
  std::string text =
      "torvane-ipad: a command-line stand-in for the iPad of Torvane P2P Helper\n\n"
      "Usage: torvane-ipad COMMAND [OPTIONS]\n\nCommands:\n";
  for (const CommandSpec& command : allCommands()) {
    std::string head = "  " + std::string(command.name);
    if (!command.operands.empty()) head += " " + std::string(command.operands);
    text += padded(head) + std::string(command.summary) + "\n";
  }
  text += linkHelp() + commonHelp();
  text +=
      "\n\"torvane-ipad COMMAND --help\" says more about a command. A first try:\n"
      "  torvane-ipad find\n"
      "  torvane-ipad pair\n"
      "  torvane-ipad state\n\n";
  return text + kExitHelp;
}

std::string commandHelp(const CommandSpec& command) {
  std::string text = "Usage: torvane-ipad " + std::string(command.name);
  if (!command.operands.empty()) text += " " + std::string(command.operands);
  text += " [OPTIONS]\n\n" + std::string(command.details) + "\n";
  if (!command.options.empty()) {
    text += "\nOptions:\n";
    for (const std::string_view name : command.options) text += optionHelp(*findOption(name));
  }
  if (command.reachesHelper) text += linkHelp();
  text += commonHelp();
  text += "\nExample:\n  " + std::string(command.example) + "\n\n";
  return text + kExitHelp;
}

}  // namespace torvane::ipad
