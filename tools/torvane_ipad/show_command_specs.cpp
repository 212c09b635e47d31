#include "torvane_ipad/argument_checks.h"
#include "torvane_ipad/command_specs.h"
#include "torvane_ipad/commands.h"

namespace torvane::ipad {
namespace {

constexpr std::uint64_t kMostSlides = 999'999'999;  // nine digits, as in the engine's paths

std::string checkSlide(Options& options) {
  if (options.operands.empty()) return {};  // where it may be left out
  const auto number = wholeNumber(options.operands[0], 1, kMostSlides);
  options.slide = static_cast<std::uint32_t>(number.value_or(0));
  return number ? "" : "\"" + options.operands[0] + "\" is no number of a slide; they start at 1.";
}

std::string checkBlack(Options& options) {
  if (options.operands.empty()) return {};
  const std::string& word = options.operands[0];
  options.black = word == "on";
  return word == "on" || word == "off" ? "" : "\"black\" takes \"on\", \"off\" or nothing.";
}

// A command that moves the show, all of one kind.
CommandSpec mover(std::string_view name, std::string_view summary, std::string_view details,
                  std::string_view example, Exit (*run)(const Options&, const Console&)) {
  return {.name = name, .summary = summary, .details = details, .example = example, .run = run};
}

}  // namespace

std::vector<CommandSpec> deckCommands() {
  return {
      {.name = "state",
       .summary = "Show the state of the presentation",
       .details = "Fetches /api/state and prints it in words.",
       .example = "torvane-ipad state",
       .run = showState},
      {.name = "watch",
       .summary = "Show changes of the presentation as they happen",
       .details = "Prints the state, then a line for every change, until it is interrupted\n"
                  "or the time given with --for is over.",
       .example = "torvane-ipad watch --for 60",
       .options = {"every", "for"},
       .run = watchState},
      {.name = "documents",
       .operands = "[ID]",
       .mostOperands = 1,
       .summary = "List the open presentations, or choose one",
       .details = "Lists the presentations that are open at the computer: \">\" marks the one\n"
                  "that is driven, and the id of each stands in brackets. With ID, or the title\n"
                  "of one of them or how it begins, drives that one from now on.",
       .example = "torvane-ipad documents \"Quarterly review\"",
       .run = chooseDocument},
      {.name = "slides",
       .summary = "List the slides",
       .details = "Lists number and title of every slide: \">\" marks the current one, and\n"
                  "\"(hidden)\" those that the show leaves out.",
       .example = "torvane-ipad slides",
       .run = listSlides},
      {.name = "notes",
       .operands = "[N]",
       .mostOperands = 1,
       .summary = "Show the notes of a slide",
       .details = "Prints the notes of slide N, or of the current one.",
       .example = "torvane-ipad notes 4",
       .run = showNotes,
       .check = checkSlide},
  };
}

std::vector<CommandSpec> showCommands() {
  return {
      {.name = "goto",
       .operands = "N",
       .leastOperands = 1,
       .mostOperands = 1,
       .summary = "Go to a slide",
       .details = "Shows slide N, also one that the show leaves out.",
       .example = "torvane-ipad goto 3",
       .run = goToSlide,
       .check = checkSlide},
      mover("next", "Go on, as a clicker does",
            "Plays the next effect of the slide, or goes to the next slide, and tells\n"
            "where the presentation is then.",
            "torvane-ipad next", goOn),
      mover("previous", "Go back, as a clicker does",
            "Takes back the last effect of the slide, or goes to the slide before, and\n"
            "tells where the presentation is then.",
            "torvane-ipad previous", goBack),
      mover("start", "Start the slide show", "Starts the slide show at the current slide.",
            "torvane-ipad start", startShow),
      mover("end", "End the slide show", "Ends the slide show.", "torvane-ipad end", endShow),
      {.name = "black",
       .operands = "[on|off]",
       .mostOperands = 1,
       .summary = "Make the show's screen dark, or bring it back",
       .details = "Makes the screen dark (on), brings the slide back (off), or does whichever\n"
                  "of both it is not.",
       .example = "torvane-ipad black on",
       .run = blackOut,
       .check = checkBlack},
  };
}

std::vector<CommandSpec> fileCommands() {
  return {
      {.name = "preview",
       .operands = "N FILE",
       .leastOperands = 2,
       .mostOperands = 2,
       .summary = "Save the picture of a slide",
       .details = "Saves the picture of slide N in FILE (standard output when it is -). A file\n"
                  "that is there already is replaced once the picture has arrived.",
       .example = "torvane-ipad preview 3 slide.png --width 640",
       .options = {"width"},
       .run = savePicture,
       .check = checkSlide},
      {.name = "export",
       .operands = "FILE",
       .leastOperands = 1,
       .mostOperands = 1,
       .summary = "Save all slides with their ink as a PDF",
       .details = "Has the engine make a PDF of all slides with the ink on them, waits for it,\n"
                  "and saves it in FILE (standard output when it is -). The engine may put it\n"
                  "off until the slide show ends. A file that is there already is replaced\n"
                  "once the PDF has arrived.",
       .example = "torvane-ipad export talk.pdf",
       .run = exportSlides},
  };
}

}  // namespace torvane::ipad
