#include "torvane_ipad/state_text.h"

#include <gtest/gtest.h>

namespace torvane::ipad {
namespace {

using Lines = std::vector<std::string>;

JsonObject state(std::string_view text) {
  return parseJsonObject(text).value_or(JsonObject{});
}

TEST(StateText, DescribesWhatTheEngineReports) {
  const auto lines = describeState(state(
      R"({"version":"1.0","deck":"Sample","slide":2,"count":5,"title":"Pens","presenting":true,
          "aspect":0.5625,"strokes":3,"inkSeq":9,"overlayV":1})"));
  EXPECT_EQ(lines, (Lines{"Presentation: Sample", "Slide 2 of 5: Pens", "The slide show is running",
                          "Pen strokes on the slide: 3", "Overlay picture: version 1",
                          "Engine: version 1.0"}));
}

TEST(StateText, LeavesOutWhatIsMissingOrOfAnotherType) {
  EXPECT_EQ(describeState(state("{}")), Lines{});
  EXPECT_EQ(describeState(state(R"({"slide":"2","presenting":1,"title":"x"})")), Lines{});
  EXPECT_EQ(describeState(state(R"({"slide":2,"title":""})")), Lines{"Slide 2"});
}

TEST(StateText, KeepsTerminalControlsOut) {
  EXPECT_EQ(describeState(state(R"({"deck":"a\u001b[2Jb\nc\u202ed"})")),
            Lines{"Presentation: a?[2Jb?c?d"});
}

TEST(StateText, NamesOnlyWhatChanged) {
  const auto before = state(R"({"slide":1,"count":5,"presenting":false,"inkSeq":1})");
  const auto after = state(R"({"slide":2,"count":5,"presenting":true,"inkSeq":2})");
  EXPECT_EQ(describeChanges(before, after), (Lines{"Slide 2 of 5", "The slide show is running"}));
  EXPECT_EQ(describeChanges(after, after), Lines{});
}

}  // namespace
}  // namespace torvane::ipad
