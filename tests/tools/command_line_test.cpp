#include "torvane_ipad/command_line.h"

#include <gtest/gtest.h>

#include <vector>

#include "torvane_ipad/command_help.h"

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
  const auto line = parse({"get", "--", "--path"});
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
    EXPECT_EQ(parse({"find", "--port", port}).error, "--port needs a number from 1 to 65535.")
        << port;
  }
  for (const char* seconds : {"0", "-1", "nan", "inf", "86401", "1s"}) {
    EXPECT_NE(parse({"find", "--timeout", seconds}).error, "") << seconds;
  }
  EXPECT_EQ(parse({"find", "--timeout", "0.25"}).options.timeout, 0.25);
}

TEST(CommandLine, RefusesFiguresThatItCannotDraw) {
  EXPECT_EQ(parse({"draw", "--figure", "star"}).error, "");
  EXPECT_EQ(parse({"draw", "--figure", "square"}).error,
            "--figure needs circle, line, spiral, star or wave.");
}

TEST(CommandLine, RefusesMissingAndSurplusArguments) {
  EXPECT_EQ(parse({"find", "--port"}).error, "--port needs a number from 1 to 65535.");
  EXPECT_EQ(parse({"find", "--json=yes"}).error, "--json takes no argument.");
}

TEST(CommandLine, RefusesWhatIsNotUtf8) {
  EXPECT_NE(parse({"get", "/\xff"}).error, "");
  EXPECT_NE(parse({"find", "--name", "\xc3"}).error, "");
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
