#include "torvane_show/question.h"

#include <gtest/gtest.h>

#include "torvane_show/answers.h"
#include "torvane_show/line_buffer.h"

namespace torvane::show {
namespace {

using Kind = Question::Kind;

TEST(ShowQuestion, ReadsEachKind) {
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"look"})")->kind, Kind::kLook);
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"next","with":[]})")->kind, Kind::kNext);
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"previous"})")->kind, Kind::kPrevious);
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"end"})")->kind, Kind::kEnd);
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"go_to","with":[3]})")->page, 3);
  EXPECT_TRUE(parseQuestion(R"({"id":7,"do":"blank","with":[true]})")->on);
  EXPECT_EQ(parseQuestion(R"({"id":7,"do":"page","with":[2]})")->page, 2);
  const auto picture = parseQuestion(R"({"id":-8,"do":"picture","with":[2,320],"more":1})");
  EXPECT_EQ(picture->id, -8);
  EXPECT_EQ(picture->kind, Kind::kPicture);
  EXPECT_EQ(picture->page, 2);
  EXPECT_EQ(picture->width, 320);
}

TEST(ShowQuestion, PageNumbersBeyondAllReasonAreOfNoPage) {
  for (const auto* page : {"0", "-1", "4294967297", "9223372036854775807"}) {
    const auto question =
        parseQuestion(std::string(R"({"id":1,"do":"go_to","with":[)") + page + "]}");
    ASSERT_TRUE(question) << page;
    EXPECT_EQ(question->page, 0) << page;
  }
}

TEST(ShowQuestion, RefusesWhatIsNone) {
  for (const auto* line :
       {"", "look", "[]", "{}", R"({"do":"look"})", R"({"id":1})", R"({"id":"1","do":"look"})",
        R"({"id":1,"do":"open","with":["/etc/passwd"]})", R"({"id":1,"do":"look","with":[1]})",
        R"({"id":1,"do":"look","with":{}})", R"({"id":1,"do":"go_to"})",
        R"({"id":1,"do":"go_to","with":["3"]})", R"({"id":1,"do":"go_to","with":[1.5]})",
        R"({"id":1,"do":"blank","with":[1]})", R"({"id":1,"do":"picture","with":[1]})",
        R"({"id":1,"do":"picture","with":[1,0]})", R"({"id":1,"do":"picture","with":[1,99999]})",
        "{\"id\":1,\"do\":\"\xff\"}"})
    EXPECT_EQ(parseQuestion(line), std::nullopt) << line;
}

TEST(ShowQuestion, RefusesLongAndDeepOnes) {
  const std::string inside(2000, '[');
  EXPECT_FALSE(parseQuestion(R"({"id":1,"do":"look","x":)" + inside));
  const std::string padded = R"({"id":1,"do":"look"})" + std::string(kLongestQuestion, ' ');
  EXPECT_FALSE(parseQuestion(padded));
  EXPECT_TRUE(parseQuestion(padded.substr(0, kLongestQuestion)));
}

TEST(ShowAnswer, SaysWhatIsShown) {
  const Deck deck{"/a/talk.pdf", "talk.pdf", "5", {{"One", "", 0.75}, {"Two", "Größe", 0.5625}}};
  EXPECT_EQ(lookAnswer(3, deck, {.page = 2, .isBlack = true}, true),
            R"({"id":3,"answer":{"path":"/a/talk.pdf","title":"talk.pdf","revision":"5",)"
            R"("slide":2,"count":2,"aspect":5.625E-1,"presenting":true,"blank":true,)"
            R"("at_end":false}})"
            "\n");
  EXPECT_EQ(pageAnswer(4, deck.pages[1]),
            R"({"id":4,"answer":{"title":"Two","notes":"Größe","aspect":5.625E-1}})"
            "\n");
  EXPECT_EQ(refusal(5, kNoSuchPage), R"({"id":5,"refused":"There is no such page."})"
                                     "\n");
  EXPECT_EQ(doneAnswer(6), R"({"id":6,"answer":{}})"
                           "\n");
  EXPECT_EQ(pictureAnswer(7, "QQ=="), R"({"id":7,"answer":{"picture":"QQ=="}})"
                                      "\n");
}

TEST(ShowAnswer, WhatIsNoTextIsRefusedAndStillALine) {
  EXPECT_EQ(pageAnswer(4, {"\xff", "", 1}), R"({"id":4,"refused":"This cannot be told as text."})"
                                            "\n");
}

TEST(ShowLines, ComeWholeOutOfPieces) {
  LineBuffer lines(100);
  lines.add("ab");
  EXPECT_EQ(lines.take(), std::nullopt);
  lines.add("c\nd\n\ne");
  EXPECT_EQ(lines.take(), "abc");
  EXPECT_EQ(lines.take(), "d");
  EXPECT_EQ(lines.take(), "");
  EXPECT_EQ(lines.take(), std::nullopt);
  EXPECT_FALSE(lines.isTooLong());
}

TEST(ShowLines, OneWithoutEndIsNoticed) {
  LineBuffer lines(5);
  lines.add("12345");
  EXPECT_FALSE(lines.isTooLong());
  lines.add("6");
  EXPECT_TRUE(lines.isTooLong());
}

}  // namespace
}  // namespace torvane::show
