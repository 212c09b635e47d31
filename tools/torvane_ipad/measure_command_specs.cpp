#include "torvane_ipad/command_specs.h"
#include "torvane_ipad/commands.h"

namespace torvane::ipad {
namespace {

std::string checkLoad(Options& options) {
  return options.echoSlides > 0 && !options.path.empty()
             ? "--echo-slides asks for paths of its own, so --path makes no sense with it."
             : "";
}

}  // namespace

std::vector<CommandSpec> measureCommands() {
  return {
      {.name = "load",
       .summary = "Send many requests and measure the answers",
       .details = "Keeps requests in flight from one or more devices and checks that every\n"
                  "request gets exactly one answer, its own. Prints throughput, latencies\n"
                  "(counted from sending a request to its answer) and what went wrong:\n"
                  "  failed        answered with a status of 400 or more\n"
                  "  lost          not answered within --timeout\n"
                  "  late          answered, but after --timeout; not counted as lost\n"
                  "  doubled       answered more than once\n"
                  "  misdelivered  the answer to a request of another peer or to no request\n"
                  "  broken        not a well-formed answer\n"
                  "Devices that are not paired yet are asked about first; the helper must be\n"
                  "known by \"pair\". Ends with 1 when anything went wrong. With --greedy it\n"
                  "shows whether one device can hold up the others:\n"
                  "\"load --peers 4 --greedy 150000 --rate 40\".",
       .example = "torvane-ipad load --peers 4 --requests 60000 --rate 200 --in-flight 4",
       .options = {"peers", "requests", "seconds", "in-flight", "rate", "path", "echo-slides",
                   "greedy"},
       .run = runLoad,
       .check = checkLoad},
      {.name = "replay",
       .summary = "Check that the helper refuses replayed requests",
       .details = "Sends one signed request twice on one connection and once more on a new\n"
                  "connection, and reports the answers: there must be exactly one.",
       .example = "torvane-ipad replay",
       .run = tryReplay},
  };
}

}  // namespace torvane::ipad
