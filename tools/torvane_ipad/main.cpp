// torvane-ipad: a command-line stand-in for the iPad.

#include <signal.h>
#include <sodium.h>

#include <cstdio>
#include <string>
#include <vector>

#include "torvane_ipad/command_help.h"
#include "torvane_ipad/command_line.h"
#include "torvane_ipad/command_table.h"

namespace torvane::ipad {
namespace {

Exit run(const std::vector<std::string>& arguments) {
  const CommandLine line = parseCommandLine(arguments);
  const Console console(line.options.json);
  const CommandSpec* command = findCommand(line.options.command);
  if (line.options.help) {
    std::fputs((command != nullptr ? commandHelp(*command) : generalHelp()).c_str(), stdout);
    return Exit::ok;
  }
  if (line.options.version) {
    std::puts("torvane-ipad " TORVANE_VERSION " (build " TORVANE_BUILD_NUMBER ")");
    return Exit::ok;
  }
  if (!line.error.empty()) {
    const std::string which = command != nullptr ? line.options.command + " " : "";
    return console.fail(Exit::usage,
                        line.error + " \"torvane-ipad " + which + "--help\" tells more.");
  }
  if (sodium_init() < 0) {
    return console.fail(Exit::usage, "This system gives no random numbers to make keys with.");
  }
  ::signal(SIGPIPE, SIG_IGN);
  return command->run(line.options, console);
}

}  // namespace
}  // namespace torvane::ipad

int main(int argc, char** argv) {
  return static_cast<int>(torvane::ipad::run({argv + 1, argv + argc}));
}
