#include "engine/engine_log.h"

#include <gtest/gtest.h>

#include "fakes/fake_files.h"

namespace torvane {
namespace {

constexpr const char* kPath = "/home/presenter/Library/Logs/Torvane P2P Helper/engine.log";

class EngineLogFile : public testing::Test {
 protected:
  FakeFileSystem files;
  EngineLog log{files, "/home/presenter/Library/Logs/Torvane P2P Helper"};

  std::string tailOf(std::string text, std::uint64_t offset = 0) {
    files.put(kPath, std::move(text));
    return log.tail(offset);
  }
};

TEST_F(EngineLogFile, LiesInTheLogFolderAndMakesThatFolder) {
  EXPECT_EQ(log.path(), kPath);
  EXPECT_EQ(files.folders.count("/home/presenter/Library/Logs/Torvane P2P Helper"), 1U);
}

TEST_F(EngineLogFile, IsMadeWhenMissing) {
  const auto handle = log.open();
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(handle->offset(), 0U);
}

TEST_F(EngineLogFile, IsAppendedTo) {
  files.put(kPath, "before\n");
  const auto handle = log.open();
  EXPECT_EQ(handle->offset(), 7U);
  handle->write("after\n");
  EXPECT_EQ(files.text(kPath), "before\nafter\n");
}

TEST_F(EngineLogFile, OfExactlyTwoMillionBytesIsKept) {
  files.put(kPath, std::string(2'000'000, 'x'));
  EXPECT_EQ(log.open()->offset(), 2'000'000U);
}

TEST_F(EngineLogFile, OfOneByteMoreIsDeletedFirst) {
  files.put(kPath, std::string(2'000'001, 'x'));
  EXPECT_EQ(log.open()->offset(), 0U);
  EXPECT_EQ(files.text(kPath), "");
}

TEST_F(EngineLogFile, ThatCannotBeOpenedGivesNoHandle) {
  files.unwritable.insert(kPath);
  EXPECT_EQ(log.open(), nullptr);
}

TEST_F(EngineLogFile, TailOfAMissingFileIsEmpty) {
  EXPECT_EQ(log.tail(0), "");
}

TEST_F(EngineLogFile, OffsetPastTheEndYieldsNothing) {
  EXPECT_EQ(tailOf("one\n", 100), "");
}

TEST_F(EngineLogFile, TailBeginsAtTheOffset) {
  EXPECT_EQ(tailOf("old\nnew\n", 4), "new");
}

TEST_F(EngineLogFile, KeepsTheLastSixOfSevenLines) {
  EXPECT_EQ(tailOf("1\n2\n3\n4\n5\n6\n7\n"), "2\n3\n4\n5\n6\n7");
}

TEST_F(EngineLogFile, BlankLinesNeverCount) {
  EXPECT_EQ(tailOf("1\n2\n\n3\n \t \n4\n5\n   \n6\n\n\n"), "1\n2\n3\n4\n5\n6");
}

TEST_F(EngineLogFile, TrimsSpacesAndTabsButNoOtherWhiteSpace) {
  EXPECT_EQ(tailOf(" \ta b\t \n\r\n"), "a b\n\r");
}

TEST_F(EngineLogFile, TailThatIsNotUtf8IsEmpty) {
  EXPECT_EQ(tailOf("good\n\xC3\x28\n"), "");
}

TEST_F(EngineLogFile, EndlessOutputIsReadFromItsEnd) {
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "ä line " + std::to_string(i) + "\n";
  EXPECT_EQ(tailOf(text), lastLines(text));
}

TEST_F(EngineLogFile, OfALongLineTheEndIsShownWithoutBreakingACharacter) {
  std::string line;
  for (int i = 0; i < 400; ++i) line += "€";
  std::string expected;
  for (int i = 0; i < 166; ++i) expected += "€";
  EXPECT_EQ(tailOf("first\n" + line), "first\n…" + expected);
}

TEST_F(EngineLogFile, OfALineLongerThanWhatIsReadTheEndIsShown) {
  const std::string reason = "OSError: port in use";
  const std::string dots(500 - reason.size(), '.');
  EXPECT_EQ(tailOf(std::string(1'000'000, '.') + reason + "\n"), "…" + dots + reason);
}

// Wherever the cut goes through a character of four bytes.
TEST_F(EngineLogFile, OfALineLongerThanWhatIsReadNoCharacterIsBroken) {
  for (std::size_t end = 0; end < 4; ++end) {
    std::string text;
    for (int i = 0; i < 20'000; ++i) text += "😀";
    const std::string tail = tailOf(text + std::string(end, '!'));
    EXPECT_TRUE(tail.starts_with("…😀")) << end;
    EXPECT_TRUE(tail.ends_with("😀" + std::string(end, '!'))) << end;
  }
}

TEST_F(EngineLogFile, CutJustAfterALineFeedKeepsTheWholeLine) {
  const std::string last = "last\n";
  for (const std::size_t before : {0U, 1U, 2U}) {
    const std::string line = "whole" + std::string(65'536 - 5 - 1 - last.size() - before, ' ');
    const std::string text = std::string(100, 'x') + "\n" + line + "\n" + last;
    const std::string cut = before == 0 ? "whole" : before == 1 ? "whole" : "…x\nwhole";
    EXPECT_EQ(tailOf(text), cut + "\nlast") << before;
  }
}

TEST(EngineStartBanner, NamesTheTimeInUniversalTime) {
  EXPECT_EQ(engineStartBanner(1'795'248'191.9),
            "\n===== engine start 2026-11-21 08:03:11 +0000 =====\n");
}

TEST(EngineStartBanner, KnowsLeapDays) {
  EXPECT_EQ(engineStartBanner(1'709'164'800),
            "\n===== engine start 2024-02-29 00:00:00 +0000 =====\n");
}

}  // namespace
}  // namespace torvane
