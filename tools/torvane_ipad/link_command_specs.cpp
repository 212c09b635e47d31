#include "torvane_ipad/argument_checks.h"
#include "torvane_ipad/command_specs.h"
#include "torvane_ipad/commands.h"

namespace torvane::ipad {
namespace {

std::string checkPair(Options& options) {
  if (!options.forget) return {};
  if (options.trustNew) return "--forget and --trust-new contradict each other.";
  return options.peers > 0 ? "--forget is about the helper, so --peers makes no sense with it."
                           : "";
}

std::string checkGet(Options& options) {
  const std::string& path = options.operands[0];
  return isRequestPath(path) ? ""
                             : "\"" + path +
                                   "\" is no path: it begins with a slash, and what a URL "
                                   "does not allow is percent-encoded.";
}

std::string checkPost(Options& options) {
  const bool sendsNothing = options.operands.size() < 2;
  return sendsNothing && !options.contentType.empty()
             ? "--content-type says of what type FILE is, and there is no FILE."
             : checkGet(options);
}

}  // namespace

std::vector<CommandSpec> linkCommands() {
  return {
      {.name = "find",
       .summary = "List the helpers that can be reached",
       .details = "Lists the helper that runs on this computer and those that announce\n"
                  "themselves on the network. Looking takes about three seconds.",
       .example = "torvane-ipad find",
       .run = findHelpers,
       .reachesHelper = false},
      {.name = "pair",
       .summary = "Ask a helper to pair this device",
       .details = "Invites the helper and waits until its user has answered. The answer must be\n"
                  "\"Ignore\" where its question does not show the six digits that are printed:\n"
                  "another computer sits in between then. Afterwards the helper accepts this\n"
                  "device without a question, and this device knows the helper's certificate.\n"
                  "Other commands send nothing to a helper that shows an unknown one.\n"
                  "With --peers, pairs the devices that \"load --peers\" acts as.",
       .example = "torvane-ipad pair --host 192.168.1.20 --name \"Stage iPad\"",
       .options = {"peers", "trust-new", "forget"},
       .run = pairDevices,
       .check = checkPair},
      {.name = "info",
       .summary = "Show which build the helper is",
       .details = "Connects, asks for a challenge and sends a signed request for the\n"
                  "helper's build number.",
       .example = "torvane-ipad info --json",
       .run = showInfo},
  };
}

std::vector<CommandSpec> requestCommands() {
  return {
      {.name = "get",
       .operands = "PATH",
       .leastOperands = 1,
       .mostOperands = 1,
       .summary = "Fetch a path of the engine",
       .details = "Sends a signed GET request and writes the answer's body to standard\n"
                  "output, or to the file given with --output. What is no text is not\n"
                  "written to a terminal.",
       .example = "torvane-ipad get /api/slides/1/picture --output slide.png",
       .options = {"output"},
       .run = getPath,
       .check = checkGet},
      {.name = "post",
       .operands = "PATH [FILE]",
       .leastOperands = 1,
       .mostOperands = 2,
       .summary = "Send something to a path of the engine",
       .details = "Sends a signed request with the contents of FILE (standard input when\n"
                  "FILE is -; nothing when it is left out) and writes the answer's body.",
       .example = "echo '{\"slide\": 3}' | torvane-ipad post /api/goto -",
       .options = {"method", "content-type", "output"},
       .run = postFile,
       .check = checkPost},
  };
}

}  // namespace torvane::ipad
