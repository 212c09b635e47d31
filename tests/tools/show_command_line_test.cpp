#include "torvane_show/command_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace torvane::show {
namespace {

using Mode = CommandLine::Mode;

CommandLine parse(std::vector<std::string> arguments) {
  return parseCommandLine(arguments);
}

TEST(ShowCommandLine, NamesAFile) {
  const auto line = parse({"talk.pdf"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.mode, Mode::kShow);
  EXPECT_EQ(line.file, "talk.pdf");
  EXPECT_EQ(line.page, 1);
  EXPECT_FALSE(line.hasDialog);
}

TEST(ShowCommandLine, TakesOptionsAnywhereAndFilesThatLookLikeOptions) {
  const auto line = parse({"--page", "12", "--dialog", "--", "-h"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.page, 12);
  EXPECT_TRUE(line.hasDialog);
  EXPECT_EQ(line.file, "-h");
  EXPECT_EQ(parse({"talk.pdf", "--answer"}).mode, Mode::kAnswer);
}

TEST(ShowCommandLine, AFileCanBeAskedForInADialog) {
  const auto line = parse({"--dialog"});
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.file, "");
}

TEST(ShowCommandLine, HelpAndVersionNeedNoFile) {
  EXPECT_EQ(parse({"--help"}).mode, Mode::kHelp);
  EXPECT_EQ(parse({"-h", "--nonsense"}).error, "");
  EXPECT_EQ(parse({"--version"}).mode, Mode::kVersion);
}

TEST(ShowCommandLine, SaysWhatItDoesNotUnderstand) {
  EXPECT_EQ(parse({}).error, "Name the PDF to show (see --help).");
  EXPECT_EQ(parse({"a", "b"}).error, "Only one file can be shown.");
  EXPECT_EQ(parse({"--full", "a"}).error, "There is no option --full (see --help).");
  for (const auto* page : {"0", "-1", "x", "1x", "", "99999999999"})
    EXPECT_EQ(parse({"a", "--page", page}).error, "--page needs the number of a page, from 1.");
  EXPECT_EQ(parse({"a", "--page"}).error, "--page needs the number of a page, from 1.");
}

}  // namespace
}  // namespace torvane::show
