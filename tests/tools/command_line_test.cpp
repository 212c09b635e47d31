#include "torvane_ipad/command_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "torvane_ipad/command_help.h"
#include "torvane_ipad/command_table.h"

namespace torvane::ipad {
namespace {

CommandLine parse(std::vector<std::string> arguments) {
  return parseCommandLine(arguments);
}

TEST(CommandLine, ReadsCommandOperandsAndOptionsInAnyOrder) {
  const auto line = parse({"--json", "post", "/api/goto", "--port=99", "-", "--host", "mini"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.options.command, "post");
  EXPECT_EQ(line.options.operands, (std::vector<std::string>{"/api/goto", "-"}));
  EXPECT_EQ(line.options.port, 99);
  EXPECT_EQ(line.options.host, "mini");
  EXPECT_TRUE(line.options.json);
}

TEST(CommandLine, TakesDashedOperandsAfterTwoDashes) {
  const auto line = parse({"export", "--", "--path"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.options.operands, (std::vector<std::string>{"--path"}));
}

TEST(CommandLine, RefusesWhatIsNoCommand) {
  EXPECT_EQ(parse({}).error, "Say what to do.");
  EXPECT_EQ(parse({"dance"}).error, "There is no command \"dance\".");
}

TEST(CommandLine, RefusesUnknownAndForeignOptions) {
  EXPECT_EQ(parse({"get", "/", "--colour"}).error, "There is no option --colour.");
  EXPECT_EQ(parse({"get", "/", "-x"}).error, "There is no option -x.");
  EXPECT_EQ(parse({"get", "/", "--peers", "3"}).error, "\"get\" takes no --peers.");
}

TEST(CommandLine, RefusesTooFewAndTooManyOperands) {
  EXPECT_EQ(parse({"get"}).error, "\"get\" needs PATH.");
  EXPECT_EQ(parse({"get", "/a", "/b"}).error, "\"/b\" is one argument too many.");
}

TEST(CommandLine, RefusesNumbersOutOfRange) {
  for (const char* port : {"0", "65536", "-1", "8x", "", " 1", "1e3"}) {
    EXPECT_EQ(parse({"info", "--port", port}).error, "--port needs a number from 1 to 65535.")
        << port;
  }
  for (const char* seconds : {"0", "-1", "nan", "inf", "86401", "1s"}) {
    EXPECT_NE(parse({"info", "--timeout", seconds}).error, "") << seconds;
  }
  EXPECT_EQ(parse({"info", "--timeout", "0.25"}).options.timeout, 0.25);
  EXPECT_EQ(parse({"info", "--timeout", "0.25"}).error, "");
}

TEST(CommandLine, RefusesFiguresThatItCannotDraw) {
  EXPECT_EQ(parse({"draw", "--figure", "star"}).error, "");
  EXPECT_EQ(parse({"draw", "--figure", "square"}).error,
            "--figure needs circle, line, spiral, star or wave.");
}

TEST(CommandLine, RefusesMissingAndSurplusArguments) {
  EXPECT_EQ(parse({"info", "--port"}).error, "--port needs a number from 1 to 65535.");
  EXPECT_EQ(parse({"find", "--json=yes"}).error, "--json takes no argument.");
}

TEST(CommandLine, RefusesWhatIsNotUtf8) {
  EXPECT_NE(parse({"get", "/\xff"}).error, "");
  EXPECT_NE(parse({"info", "--name", "\xc3"}).error, "");
}

TEST(CommandLine, RefusesOptionsThatMakeNoSenseForACommand) {
  EXPECT_EQ(parse({"find", "--json"}).error, "");
  for (const OptionSpec& option : linkOptions()) {
    const std::string name = "--" + std::string(option.name);
    EXPECT_EQ(parse({"find", name + "=1"}).error, "\"find\" takes no " + name + ".");
    EXPECT_EQ(parse({"next", name + "=1"}).error, "");
  }
}

TEST(CommandLine, RefusesOptionsThatMakeNoSenseTogether) {
  const std::vector<std::vector<std::string>> pointless = {
      {"pair", "--forget", "--trust-new"},
      {"pair", "--forget", "--peers", "2"},
      {"post", "/x", "--content-type", "text/plain"},
      {"draw", "file", "--figure", "star"},
      {"draw", "file", "--points", "9"},
      {"load", "--path", "/x", "--echo-slides", "3"}};
  for (auto arguments : pointless) {
    EXPECT_NE(parse(arguments).error, "") << arguments[0];
    arguments.resize(arguments[0] == "post" || arguments[0] == "draw" ? 2 : 1);
    EXPECT_EQ(parse(arguments).error, "") << arguments[0];
  }
}

TEST(CommandLine, ReadsTheNumberOfASlide) {
  EXPECT_EQ(parse({"goto", "12"}).options.slide, 12U);
  EXPECT_EQ(parse({"preview", "3", "x.png"}).options.slide, 3U);
  EXPECT_EQ(parse({"notes"}).options.slide, 0U);
  for (const char* number :
       {"0", "--", "+1", "1.5", "x", "", "1000000000", "99999999999999999999"}) {
    for (const char* command : {"goto", "notes"}) {
      EXPECT_EQ(parse({command, "--", number}).error,
                "\"" + std::string(number) + "\" is no number of a slide; they start at 1.");
    }
  }
}

TEST(CommandLine, ReadsWhatShouldBecomeOfTheScreen) {
  EXPECT_EQ(parse({"black", "on"}).options.black, true);
  EXPECT_EQ(parse({"black", "off"}).options.black, false);
  EXPECT_EQ(parse({"black"}).options.black, std::nullopt);
  EXPECT_EQ(parse({"black", "On"}).error, "\"black\" takes \"on\", \"off\" or nothing.");
}

TEST(CommandLine, RefusesMethodsThatAreNone) {
  EXPECT_EQ(parse({"post", "/", "--method", "M-SEARCH"}).error, "");
  for (const char* method : {"", "A B", "G\r\nX", "Ä", "a/b"}) {
    EXPECT_EQ(parse({"post", "/", "--method", method}).error, "--method needs an HTTP method.");
  }
}

TEST(CommandLine, RefusesPathsThatMakeNoAddress) {
  EXPECT_EQ(parse({"get", "/api/slides/1/picture?width=320&x=a%20b"}).error, "");
  for (const std::string path : {"", "api", "/a b", "/ä", "/a\"b", "/a\nb", "http://x/"}) {
    EXPECT_EQ(parse({"get", path}).error,
              "\"" + path +
                  "\" is no path: it begins with a slash, and what a URL does not allow is "
                  "percent-encoded.");
    EXPECT_NE(parse({"post", path}).error, "");
    EXPECT_EQ(parse({"load", "--path", path}).error,
              "--path needs a path that begins with a slash.");
  }
}

TEST(CommandLine, VersionNeedsNothingElse) {
  EXPECT_TRUE(parse({"--version"}).options.version);
  EXPECT_EQ(parse({"--version"}).error, "");
  EXPECT_EQ(parse({"goto", "--version"}).error, "");
}

TEST(CommandLine, HelpNeedsNothingElse) {
  EXPECT_TRUE(parse({"--help"}).options.help);
  EXPECT_TRUE(parse({"get", "-h"}).options.help);
  EXPECT_EQ(parse({"get", "--help"}).error, "");
}

TEST(CommandHelp, NamesEveryCommandAndItsOptions) {
  const std::string general = generalHelp();
  for (const CommandSpec& command : allCommands()) {
    EXPECT_NE(general.find("\n  " + std::string(command.name)), general.npos) << command.name;
    const std::string text = commandHelp(command);
    EXPECT_NE(text.find(command.example), text.npos);
    for (const std::string_view option : command.options) {
      ASSERT_NE(findOption(option), nullptr) << option;
      EXPECT_NE(text.find("  --" + std::string(option) + " "), text.npos) << option;
    }
  }
}

TEST(CommandHelp, NamesNoOptionThatIsRefused) {
  const std::string find = commandHelp(*findCommand("find"));
  EXPECT_EQ(find.find("--host"), find.npos);
  EXPECT_NE(find.find("--json"), find.npos);
  EXPECT_NE(commandHelp(*findCommand("next")).find("--host"), std::string::npos);
}

TEST(CommandHelp, SaysWhatTheExitStatusMeans) {
  for (const char* status : {"Ends with 0 when", ", 1 when", ", 2 when", ", 3 when"}) {
    std::string text = generalHelp();
    std::ranges::replace(text, '\n', ' ');
    EXPECT_NE(text.find(status), text.npos) << status;
  }
}

TEST(CommandHelp, FitsATerminal) {
  for (const CommandSpec& command : allCommands()) {
    const std::string text = commandHelp(command) + generalHelp();
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find('\n', start)) != text.npos; start = end + 1) {
      EXPECT_LE(end - start, 90U) << text.substr(start, end - start);
    }
  }
}

}  // namespace
}  // namespace torvane::ipad
