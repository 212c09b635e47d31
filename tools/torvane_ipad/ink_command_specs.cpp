#include "torvane_ipad/command_specs.h"
#include "torvane_ipad/commands.h"

namespace torvane::ipad {
namespace {

std::string checkDraw(Options& options) {
  const bool isFigure = !options.figure.empty() || options.points > 0;
  return isFigure && !options.operands.empty() ? "Draw either a figure or a file." : "";
}

}  // namespace

std::vector<CommandSpec> inkCommands() {
  return {
      {.name = "draw",
       .operands = "[FILE]",
       .mostOperands = 1,
       .summary = "Draw on the slide",
       .details = "Draws a figure, or the strokes of FILE (standard input when it is -), on\n"
                  "the slide that is shown. FILE holds a point per line: two numbers, the\n"
                  "way from the left and from the top in fractions of the slide. An empty\n"
                  "line ends a stroke; what follows a # is a comment.",
       .example = "torvane-ipad draw --figure star --duration 3",
       .options = {"figure", "points", "duration"},
       .run = drawInk,
       .check = checkDraw},
      {.name = "laser",
       .summary = "Move the laser dot over the slide",
       .details = "Moves the dot along a figure, there and back in two seconds, until it is\n"
                  "interrupted or the time given with --for is over. Then the dot fades.",
       .example = "torvane-ipad laser --for 5",
       .options = {"figure", "for"},
       .run = moveLaser},
      {.name = "undo",
       .summary = "Take the newest stroke off the slide",
       .details = "Deletes the stroke of the slide that was begun last, and tells how many\n"
                  "are left.",
       .example = "torvane-ipad undo",
       .run = undoStroke},
      {.name = "clear",
       .summary = "Take all ink off the slide",
       .details = "Deletes all strokes of the slide that is shown, and its laser dot.",
       .example = "torvane-ipad clear",
       .run = clearInk},
  };
}

}  // namespace torvane::ipad
