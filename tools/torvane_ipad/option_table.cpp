#include "torvane_ipad/command_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

#include "torvane_ipad/argument_checks.h"
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
  const auto value = wholeNumber(argument, least, most);
  if (!value) return false;
  options.*member = static_cast<std::remove_reference_t<decltype(options.*member)>>(*value);
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

bool setMethod(Options& options, std::string_view argument) {
  options.method = argument;
  return isMethod(argument);
}

bool setPath(Options& options, std::string_view argument) {
  options.path = argument;
  return isRequestPath(argument);
}

bool setFigure(Options& options, std::string_view argument) {
  options.figure = argument;
  return isFigure(argument);
}

constexpr std::uint64_t kMostSeconds = 86400;
constexpr std::uint64_t kMillion = 1000000;
constexpr std::string_view kSeconds = "a number of seconds above 0, at most 86400";

constexpr std::size_t kCommonCount = 3;
constexpr std::size_t kLinkCount = 6;

constexpr std::array kOptions = {
    // The common ones first, then those of the link.
    OptionSpec{"json", "", "", "print one JSON object per line instead of sentences",
               setSwitch<&Options::json>},
    OptionSpec{"help", "", "", "print this text", setSwitch<&Options::help>},
    OptionSpec{"version", "", "", "print the version of this program",
               setSwitch<&Options::version>},

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
    OptionSpec{"timeout", "SECONDS", kSeconds, "how long to wait for an answer (default 10)",
               setDecimal<&Options::timeout, kMostSeconds>},
    OptionSpec{"approval", "SECONDS", kSeconds,
               "how long to wait until the helper's user has answered whether\n"
               "to pair this device (default 300)",
               setDecimal<&Options::approval, kMostSeconds>},

    OptionSpec{"trust-new", "", "", "accept that the helper shows another certificate than before",
               setSwitch<&Options::trustNew>},
    OptionSpec{"forget", "", "", "forget the helper's certificate instead of pairing",
               setSwitch<&Options::forget>},
    OptionSpec{"peers", "N", "a number from 1 to 1000",
               "act as N devices, each with a key of its own derived from the key\n"
               "file (default 1)",
               setNumber<&Options::peers, 1, 1000>},
    OptionSpec{"method", "METHOD", "an HTTP method", "the HTTP method (default POST)", setMethod},
    OptionSpec{"content-type", "TYPE", "a content type",
               "the type of FILE (default application/json)", setText<&Options::contentType>},
    OptionSpec{"output", "FILE", "a file name", "write the answer to FILE",
               setText<&Options::output>},
    OptionSpec{"width", "PIXELS", "a number from 1 to 9999",
               "how wide the picture should be; the engine has some widths and\n"
               "gives the next one (default 1280)",
               setNumber<&Options::width, 1, 9999>},
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
    OptionSpec{"path", "PATH", "a path that begins with a slash",
               "what to ask for (default /api/state); each request gets a mark of\n"
               "its own, load=PEER-NUMBER, in the query",
               setPath},
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

}  // namespace

std::span<const OptionSpec> commonOptions() {
  return std::span(kOptions).first(kCommonCount);
}

std::span<const OptionSpec> linkOptions() {
  return std::span(kOptions).subspan(kCommonCount, kLinkCount);
}

const OptionSpec* findOption(std::string_view name) {
  const auto* found = std::ranges::find(kOptions, name, &OptionSpec::name);
  return found == kOptions.end() ? nullptr : found;
}

}  // namespace torvane::ipad
