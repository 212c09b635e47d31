#include "torvane_ipad/printable.h"

#include <gtest/gtest.h>

namespace torvane::ipad {
namespace {

TEST(Printable, LeavesTextsOfAllScriptsAlone) {
  const std::string text = "Größe 東京 🎉 “quoted” \u00a0";
  EXPECT_EQ(printable(text), text);
  EXPECT_EQ(printable(""), "");
}

TEST(Printable, ReplacesControlCharacters) {
  EXPECT_EQ(printable("a\x1b[31m\x7f\r\n\tb"), "a?[31m????b");
  EXPECT_EQ(printable("\u0085\u009f"), "??");
  EXPECT_EQ(printable(std::string_view("\0", 1)), "?");
}

TEST(Printable, KeepsLineBreaksAndTabsOnRequest) {
  EXPECT_EQ(printable("a\n\tb\r", true), "a\n\tb?");
}

TEST(Printable, ReplacesCharactersThatTurnTheWritingDirection) {
  EXPECT_EQ(printable("\u061c\u200e\u200f\u2028\u2029\u202a\u202e\u2066\u2069"), "?????????");
  EXPECT_EQ(printable("\u200d\u202f\u2065"), "\u200d\u202f\u2065");
}

TEST(Printable, ReplacesBytesThatAreNotUtf8) {
  EXPECT_EQ(printable("a\xff\xc3z\xe2\x82"), "a??z??");
}

}  // namespace
}  // namespace torvane::ipad
