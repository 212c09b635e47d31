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

TEST(StateText, SaysWhatKeepsThePresentationFromBeingDrivenFirst) {
  EXPECT_EQ(describeState(state(R"({"deck":"","slide":0,"count":0,"problem":"Open one."})")),
            (Lines{"Open one.", "Presentation: ", "No presentation is open"}));
  EXPECT_EQ(describeState(state(R"({"problem":null,"progress":null})")), Lines{});
}

TEST(StateText, CountsEffectsAndNamesTheEndAndADarkScreen) {
  EXPECT_EQ(describeState(state(R"({"slide":2,"count":2,"step":1,"steps":3,"title":"x",
                                    "atEnd":true,"presenting":true,"blank":true})")),
            (Lines{"Slide 2 of 2, step 1 of 3: x (the show is past it)",
                   "The slide show is running, and its screen is dark"}));
  EXPECT_EQ(describePlace(state(R"({"slide":2,"count":2,"step":0,"steps":0})")), "Slide 2 of 2");
}

TEST(StateText, TellsWhatTakesLong) {
  const auto progress = [](const std::string& task) {
    return describeState(state(R"({"progress":{"task":")" + task + R"(","done":5,"total":20}})"));
  };
  EXPECT_EQ(progress("slides"), Lines{"Reading the slides: 5 of 20"});
  EXPECT_EQ(progress("pictures"), Lines{"Making small pictures: 5 of 20"});
  EXPECT_EQ(progress("jump"), Lines{"On the way to another slide: 5 of 20"});
  EXPECT_EQ(progress("new"), Lines{"new: 5 of 20"});
}

TEST(StateText, TellsWhatBecomesOfThePdf) {
  const auto made = [](const std::string& members) {
    return describeState(state(R"({"export":{"document":"x",)" + members + "}}"));
  };
  EXPECT_EQ(made(R"("state":"none")"), Lines{});
  EXPECT_EQ(made(R"("state":"running","progress":null)"), Lines{"Making the PDF …"});
  EXPECT_EQ(made(R"("state":"running","progress":{"task":"pages","done":5,"total":20})"),
            Lines{"Making the PDF: 5 of 20"});
  EXPECT_EQ(made(R"("state":"running","progress":{"task":"ink","done":5,"total":20})"),
            Lines{"Drawing the ink on the PDF: 5 of 20"});
  EXPECT_EQ(made(R"("state":"waiting","sentence":"Later.")"), Lines{"Later."});
  EXPECT_EQ(made(R"("state":"waiting","sentence":null)"),
            Lines{"The PDF is made when the slide show ends."});
  EXPECT_EQ(made(R"("state":"failed","sentence":"The disk is full.")"), Lines{"The disk is full."});
  EXPECT_EQ(made(R"("state":"done")"), Lines{"The PDF is ready"});
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
