// torvane-ipad: a command-line stand-in for the iPad.

#include <signal.h>
#include <sodium.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "torvane_ipad/command_help.h"
#include "torvane_ipad/command_line.h"
#include "torvane_ipad/commands.h"

namespace torvane::ipad {
namespace {

using CommandFunction = Exit (*)(const Options&, const Console&);

const std::map<std::string, CommandFunction>& functions() {
  static const std::map<std::string, CommandFunction> table = {
      {"find", findHelpers}, {"pair", pairDevices}, {"info", showInfo},    {"get", getPath},
      {"post", postFile},    {"state", showState},  {"watch", watchState}, {"draw", drawInk},
      {"laser", moveLaser},  {"undo", undoStroke},  {"clear", clearInk},   {"load", runLoad},
      {"replay", tryReplay}};
  return table;
}

Exit run(const std::vector<std::string>& arguments) {
  const CommandLine line = parseCommandLine(arguments);
  const Console console(line.options.json);
  if (line.options.help) {
    const CommandSpec* command = findCommand(line.options.command);
    std::fputs((command != nullptr ? commandHelp(*command) : generalHelp()).c_str(), stdout);
    return Exit::ok;
  }
  if (!line.error.empty()) {
    return console.fail(Exit::usage, line.error + " \"torvane-ipad --help\" tells more.");
  }
  if (sodium_init() < 0) return console.fail(Exit::usage, "libsodium does not start.");
  ::signal(SIGPIPE, SIG_IGN);
  return functions().at(line.options.command)(line.options, console);
}

}  // namespace
}  // namespace torvane::ipad

int main(int argc, char** argv) {
  return static_cast<int>(torvane::ipad::run({argv + 1, argv + argc}));
}
