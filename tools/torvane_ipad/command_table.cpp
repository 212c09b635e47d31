#include "torvane_ipad/command_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

#include "torvane_ipad/ink_figures.h"

namespace torvane::ipad {
namespace {

template <auto member>
bool setText(Options& options, std::string_view argument) {
  options.*member = argument;
  return !argument.empty();
}

template <auto member>
bool setSwitch(Options& options, std::string_view) {
  return options.*member = true;
}

template <auto member, std::uint64_t least, std::uint64_t most>
bool setNumber(Options& options, std::string_view argument) {
  std::uint64_t value = 0;
  const char* end = argument.data() + argument.size();
  const auto [stop, error] = std::from_chars(argument.data(), end, value);
  if (error != std::errc{} || stop != end || value < least || value > most) return false;
  options.*member = static_cast<std::remove_reference_t<decltype(options.*member)>>(value);
  return true;
}

// Seconds and rates: above zero, at most `most`.
template <auto member, std::uint64_t most>
bool setDecimal(Options& options, std::string_view argument) {
  double value = 0;
  const char* end = argument.data() + argument.size();
  const auto [stop, error] = std::from_chars(argument.data(), end, value);
  if (error != std::errc{} || stop != end || !std::isfinite(value)) return false;
  options.*member = value;
  return value > 0 && value <= static_cast<double>(most);
}

bool setFigure(Options& options, std::string_view argument) {
  options.figure = argument;
  return isFigure(argument);
}

constexpr std::uint64_t kMostSeconds = 86400;
constexpr std::uint64_t kMillion = 1000000;
constexpr std::string_view kSeconds = "a number of seconds above 0, at most 86400";

constexpr std::size_t kCommonCount = 8;

constexpr std::array kOptions = {
    // The common ones first.
    OptionSpec{"host", "HOST", "a host name or address",
               "the computer the helper runs on (default: the helper of this\n"
               "computer, else one found on the network)",
               setText<&Options::host>},
    OptionSpec{"port", "PORT", "a number from 1 to 65535", "the helper's port (default 48484)",
               setNumber<&Options::port, 1, 65535>},
    OptionSpec{"name", "NAME", "a text of 1 to 63 bytes",
               "the name shown to the helper's user (default \"iPad of\" and\n"
               "this computer's name)",
               setText<&Options::name>},
    OptionSpec{"key", "FILE", "a file name",
               "the file with this device's secret key, made on first use\n"
               "(default $XDG_DATA_HOME/torvane-ipad/key)",
               setText<&Options::keyFile>},
    OptionSpec{"json", "", "", "print one JSON object per line instead of sentences",
               setSwitch<&Options::json>},
    OptionSpec{"timeout", "SECONDS", kSeconds, "how long to wait for an answer (default 10)",
               setDecimal<&Options::timeout, kMostSeconds>},
    OptionSpec{"approval", "SECONDS", kSeconds,
               "how long to wait until the helper's user has answered whether\n"
               "to pair this device (default 300)",
               setDecimal<&Options::approval, kMostSeconds>},
    OptionSpec{"help", "", "", "print this text", setSwitch<&Options::help>},

    OptionSpec{"trust-new", "", "", "accept that the helper shows another certificate than before",
               setSwitch<&Options::trustNew>},
    OptionSpec{"forget", "", "", "forget the helper's certificate instead of pairing",
               setSwitch<&Options::forget>},
    OptionSpec{"peers", "N", "a number from 1 to 1000",
               "act as N devices, each with a key of its own derived from the key\n"
               "file (default 1)",
               setNumber<&Options::peers, 1, 1000>},
    OptionSpec{"method", "METHOD", "an HTTP method", "the HTTP method (default POST)",
               setText<&Options::method>},
    OptionSpec{"content-type", "TYPE", "a content type",
               "the type of what is sent (default application/json)",
               setText<&Options::contentType>},
    OptionSpec{"output", "FILE", "a file name", "write the answer to FILE",
               setText<&Options::output>},
    OptionSpec{"every", "SECONDS", kSeconds, "the time between two looks (default 1)",
               setDecimal<&Options::every, kMostSeconds>},
    OptionSpec{"for", "SECONDS", kSeconds, "stop after this time (default: when interrupted)",
               setDecimal<&Options::forTime, kMostSeconds>},
    OptionSpec{"figure", "FIGURE", kFigureNames,
               "circle, line, spiral, star or wave (default: a spiral to draw, a\n"
               "circle for the laser dot)",
               setFigure},
    OptionSpec{"points", "N", "a number from 2 to 5000",
               "how many points the figure's stroke has (default 101)",
               setNumber<&Options::points, 2, 5000>},
    OptionSpec{"duration", "SECONDS", kSeconds, "how long the drawing takes (default 1)",
               setDecimal<&Options::duration, kMostSeconds>},
    OptionSpec{"requests", "N", "a number from 1 to 1000000000",
               "how many requests to send, all peers together (default 1000, or\n"
               "as many as --seconds allows)",
               setNumber<&Options::requests, 1, 1000000000>},
    OptionSpec{"seconds", "SECONDS", kSeconds, "how long to send requests",
               setDecimal<&Options::seconds, kMostSeconds>},
    OptionSpec{"in-flight", "K", "a number from 1 to 1000",
               "how many requests of a peer may be unanswered (default 1)",
               setNumber<&Options::inFlight, 1, 1000>},
    OptionSpec{"rate", "R", "a number above 0, at most 1000000",
               "requests a second, all peers together (default: as fast as they\n"
               "are answered)",
               setDecimal<&Options::rate, kMillion>},
    OptionSpec{"path", "PATH", "a path",
               "what to ask for (default /api/state); each request gets a mark of\n"
               "its own, load=PEER-NUMBER, in the query",
               setText<&Options::path>},
    OptionSpec{"echo-slides", "COUNT", "a number from 1 to 10000",
               "ask for the notes of slides 1 to COUNT in turn instead, and check\n"
               "that each answer is about the slide that was asked for",
               setNumber<&Options::echoSlides, 1, 10000>},
    OptionSpec{"greedy", "N", "a number from 1 to 1000000",
               "have one more device send N requests of its own as fast as it can,\n"
               "without waiting for answers; the others go on until these are\n"
               "answered, and their latencies are printed alone",
               setNumber<&Options::greedy, 1, 1000000>},
};

const std::vector<CommandSpec> kCommands = {
    {"find",
     "",
     0,
     0,
     "List the helpers that can be reached",
     "Lists the helper that runs on this computer and those that announce\n"
     "themselves on the network. Looking takes about three seconds.",
     "torvane-ipad find",
     {}},
    {"pair",
     "",
     0,
     0,
     "Ask a helper to pair this device",
     "Invites the helper and waits until its user has answered. The answer must be\n"
     "\"Ignore\" where its question does not show the six digits that are printed:\n"
     "another computer sits in between then. Afterwards the helper accepts this\n"
     "device without a question, and this device knows the helper's certificate.\n"
     "Other commands send nothing to a helper that shows an unknown one.\n"
     "With --peers, pairs the devices that \"load --peers\" acts as.",
     "torvane-ipad pair --host 192.168.1.20 --name \"Stage iPad\"",
     {"peers", "trust-new", "forget"}},
    {"info",
     "",
     0,
     0,
     "Show which build the helper is",
     "Connects, asks for a challenge and sends a signed request for the\n"
     "helper's build number.",
     "torvane-ipad info --json",
     {}},
    {"get",
     "PATH",
     1,
     1,
     "Fetch a path of the engine",
     "Sends a signed GET request and writes the answer's body to standard\n"
     "output, or to the file given with --output.",
     "torvane-ipad get /api/slides/1/picture --output slide.png",
     {"output"}},
    {"post",
     "PATH [FILE]",
     1,
     2,
     "Send something to a path of the engine",
     "Sends a signed request with the contents of FILE (standard input when\n"
     "FILE is -; nothing when it is left out) and writes the answer's body.",
     "echo '{\"slide\": 3}' | torvane-ipad post /api/goto -",
     {"method", "content-type", "output"}},
    {"state",
     "",
     0,
     0,
     "Show the state of the presentation",
     "Fetches /api/state and prints it in words.",
     "torvane-ipad state",
     {}},
    {"watch",
     "",
     0,
     0,
     "Show changes of the presentation as they happen",
     "Prints the state, then a line for every change, until it is interrupted\n"
     "or the time given with --for is over.",
     "torvane-ipad watch --for 60",
     {"every", "for"}},
    {"draw",
     "[FILE]",
     0,
     1,
     "Draw on the slide",
     "Draws a figure, or the strokes of FILE (standard input when it is -), on\n"
     "the slide that is shown. FILE holds a point per line: two numbers, the\n"
     "way from the left and from the top in fractions of the slide. An empty\n"
     "line ends a stroke; what follows a # is a comment.",
     "torvane-ipad draw --figure star --duration 3",
     {"figure", "points", "duration"}},
    {"laser",
     "",
     0,
     0,
     "Move the laser dot over the slide",
     "Moves the dot along a figure, there and back in two seconds, until it is\n"
     "interrupted or the time given with --for is over. Then the dot fades.",
     "torvane-ipad laser --for 5",
     {"figure", "for"}},
    {"undo",
     "",
     0,
     0,
     "Take the newest stroke off the slide",
     "Deletes the stroke of the slide that was begun last, and tells how many\n"
     "are left.",
     "torvane-ipad undo",
     {}},
    {"clear",
     "",
     0,
     0,
     "Take all ink off the slide",
     "Deletes all strokes of the slide that is shown, and its laser dot.",
     "torvane-ipad clear",
     {}},
    {"load",
     "",
     0,
     0,
     "Send many requests and measure the answers",
     "Keeps requests in flight from one or more devices and checks that every\n"
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
     "torvane-ipad load --peers 4 --requests 60000 --rate 200 --in-flight 4",
     {"peers", "requests", "seconds", "in-flight", "rate", "path", "echo-slides", "greedy"}},
    {"replay",
     "",
     0,
     0,
     "Check that the helper refuses replayed requests",
     "Sends one signed request twice on one connection and once more on a new\n"
     "connection, and reports the answers: there must be exactly one.",
     "torvane-ipad replay",
     {}},
};

}  // namespace

std::span<const OptionSpec> commonOptions() {
  return std::span(kOptions).first(kCommonCount);
}

std::span<const CommandSpec> allCommands() {
  return kCommands;
}

const CommandSpec* findCommand(std::string_view name) {
  const auto found = std::ranges::find(kCommands, name, &CommandSpec::name);
  return found == kCommands.end() ? nullptr : &*found;
}

const OptionSpec* findOption(std::string_view name) {
  const auto* found = std::ranges::find(kOptions, name, &OptionSpec::name);
  return found == kOptions.end() ? nullptr : found;
}

bool takesOption(const CommandSpec& command, std::string_view option) {
  const auto common = commonOptions();
  return std::ranges::find(common, option, &OptionSpec::name) != common.end() ||
         std::ranges::find(command.options, option) != command.options.end();
}

}  // namespace torvane::ipad
