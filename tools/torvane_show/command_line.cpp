#include "torvane_show/command_line.h"

#include <charconv>

namespace torvane::show {
namespace {

using Mode = CommandLine::Mode;

bool readPage(const std::string& text, int& page) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, page);
  return error == std::errc() && stop == end && page >= 1;
}

CommandLine failed(std::string error) {
  CommandLine line;
  line.error = std::move(error);
  return line;
}

CommandLine only(Mode mode) {
  CommandLine line;
  line.mode = mode;
  return line;
}

}  // namespace

const char* const kHelp =
    R"(Usage: torvane-show [OPTION]... FILE

Shows a PDF on the whole screen: on the one with the pointer, or on the other where there are two.

  --page N     begin at page N
  --dialog     ask for the file when none is named, and tell in a dialog when it cannot be shown
  --answer     show nothing: answer the engine's questions from standard input
  --help       print this
  --version    print the version

Keys:
  Right, Down, Page Down, Space, Return    next page
  Left, Up, Page Up, Backspace             page before
  Home, End                                first and last page
  B, full stop                             dark screen, and back
  Escape, Q                                end

Notes are read from the file beside FILE with the same name and ".pdfpc", or ".txt": a line "---" after
each page's notes, or a line "### N" before those of page N.

Example:
  torvane-show talk.pdf
)";

CommandLine parseCommandLine(std::span<const std::string> arguments) {
  CommandLine line;
  bool onlyFiles = false;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (onlyFiles || !argument.starts_with("-")) {
      if (!line.file.empty()) return failed("Only one file can be shown.");
      line.file = argument;
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "-h" || argument == "--help") {
      return only(Mode::kHelp);
    } else if (argument == "--version") {
      return only(Mode::kVersion);
    } else if (argument == "--dialog") {
      line.hasDialog = true;
    } else if (argument == "--answer") {
      line.mode = Mode::kAnswer;
    } else if (argument == "--page") {
      if (++index == arguments.size() || !readPage(arguments[index], line.page))
        return failed("--page needs the number of a page, from 1.");
    } else {
      return failed("There is no option " + argument + " (see --help).");
    }
  }
  if (line.file.empty() && !line.hasDialog) line.error = "Name the PDF to show (see --help).";
  return line;
}

}  // namespace torvane::show
