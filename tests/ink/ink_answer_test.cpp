#include "ink/ink_answer.h"

#include <gtest/gtest.h>

#include <limits>

namespace torvane {
namespace {

std::optional<InkAnswer> parse(const std::string& body) {
  return parseInkAnswer(asBytes(body));
}

// The events read from one list, given as JSON.
std::vector<InkEvent> eventsOf(const std::string& events) {
  return parse(R"({"seq":1,"events":)" + events + "}").value().events;
}

using Events = std::vector<InkEvent>;

TEST(InkAnswer, ReadsEveryMember) {
  EXPECT_EQ(parse(R"({"seq":12,"events":[{"t":"clear"}],"presenting":true,"aspect":0.75,
                      "overlayV":3})"),
            (InkAnswer{12, {ClearInk{}}, true, 0.75, 3}));
}

TEST(InkAnswer, SequenceNumberAloneMeansADefaultForEveryOtherMember) {
  EXPECT_EQ(parse(R"({"seq":5})"), (InkAnswer{5, {}, false, 0.5625, 0}));
}

TEST(InkAnswer, MembersOfOtherTypesGetTheirDefaults) {
  EXPECT_EQ(parse(R"({"seq":5,"events":{"t":"clear"},"presenting":1,"aspect":"0.75",
                      "overlayV":1.5})"),
            (InkAnswer{5, {}, false, 0.5625, 0}));
  EXPECT_EQ(parse(R"({"seq":5,"events":null,"presenting":"true","aspect":null,"overlayV":"1"})"),
            (InkAnswer{5, {}, false, 0.5625, 0}));
}

TEST(InkAnswer, IsNoneWithoutAnIntegerSequenceNumber) {
  for (const auto* body :
       {"{}", R"({"seq":"5"})", R"({"seq":5.5})", R"({"seq":null})", R"({"seq":true})",
        R"({"seq":[5]})", R"({"seq":1e400})", R"({"seq":9223372036854775808})"}) {
    EXPECT_FALSE(parse(body)) << body;
  }
}

TEST(InkAnswer, IsNoneWhenTheBodyIsNoObject) {
  for (const auto* body : {"", "[]", R"([{"seq":5}])", "5", "null", R"("seq")", "{", R"({"seq":5)",
                           R"({"seq":5}})", "<html>", "\xFF"}) {
    EXPECT_FALSE(parse(body)) << body;
  }
}

TEST(InkAnswer, SequenceNumbersUseAll64Bits) {
  EXPECT_EQ(parse(R"({"seq":9223372036854775807})")->seq, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(parse(R"({"seq":-9223372036854775808})")->seq,
            std::numeric_limits<std::int64_t>::min());
}

TEST(InkAnswer, WholeDecimalsAreIntegersAndIntegersAreNumbers) {
  EXPECT_EQ(parse(R"({"seq":5.0,"aspect":1,"overlayV":2e0})"), (InkAnswer{5, {}, false, 1, 2}));
  EXPECT_EQ(eventsOf(R"([{"t":"begin","id":3.0,"x":1,"y":0}])"), (Events{BeginStroke{3, {1, 0}}}));
}

TEST(InkAnswer, AspectIsTakenAsItComes) {
  EXPECT_EQ(parse(R"({"seq":1,"aspect":0})")->aspect, 0);
  EXPECT_EQ(parse(R"({"seq":1,"aspect":-1})")->aspect, -1);
  EXPECT_EQ(parse(R"({"seq":1,"aspect":1e308})")->aspect, 1e308);
}

TEST(InkAnswer, AspectBeyondEveryNumberCountsAsMissing) {
  EXPECT_EQ(parse(R"({"seq":1,"aspect":1e400})")->aspect, 0.5625);
}

TEST(InkAnswer, ReadsEachKindOfEvent) {
  EXPECT_EQ(eventsOf(R"([{"t":"begin","id":7,"x":0.1,"y":0.2},{"t":"pt","id":7,"x":0.3,"y":0.4},
                         {"t":"del","ids":[7,-8]},{"t":"clear"},{"t":"laser","x":0.5,"y":0.6},
                         {"t":"laserend"}])"),
            (Events{BeginStroke{7, {0.1, 0.2}}, AppendPoint{7, {0.3, 0.4}}, DeleteStrokes{{7, -8}},
                    ClearInk{}, PlaceLaser{{0.5, 0.6}}, EndLaser{}}));
}

TEST(InkAnswer, MembersThatAKindDoesNotUseAreIgnored) {
  EXPECT_EQ(eventsOf(R"([{"t":"clear","id":"x","ids":5},{"t":"laserend","x":null}])"),
            (Events{ClearInk{}, EndLaser{}}));
}

TEST(InkAnswer, EventWithoutAKindOrOfAnUnknownKindIsSkipped) {
  EXPECT_EQ(eventsOf(R"([{},{"id":1,"x":0,"y":0},{"t":5},{"t":null},{"t":["clear"]},{"t":""},
                         {"t":"Clear"},{"t":"clear "},{"t":"pan"},{"t":"clear"}])"),
            (Events{ClearInk{}}));
}

TEST(InkAnswer, EventWhoseIdIsATextIsSkipped) {
  EXPECT_EQ(eventsOf(R"([{"t":"begin","id":"3","x":0.1,"y":0.2},{"t":"pt","id":"3","x":0,"y":0},
                         {"t":"del","ids":["3"]},{"t":"laserend"}])"),
            (Events{EndLaser{}}));
}

TEST(InkAnswer, EventWithAMissingOrMistypedFieldIsSkippedAsAWhole) {
  for (const auto* event :
       {R"({"t":"begin","id":1,"x":0.5})", R"({"t":"begin","id":1,"y":0.5})",
        R"({"t":"begin","x":0.5,"y":0.5})", R"({"t":"begin","id":1.5,"x":0.5,"y":0.5})",
        R"({"t":"begin","id":true,"x":0.5,"y":0.5})", R"({"t":"pt","id":1,"x":"0.5","y":0.5})",
        R"({"t":"pt","id":1,"x":true,"y":0.5})", R"({"t":"pt","id":1,"x":null,"y":0.5})",
        R"({"t":"laser","x":0.5})", R"({"t":"laser","x":0.5,"y":[0.5]})"}) {
    EXPECT_EQ(eventsOf("[" + std::string(event) + "]"), Events{}) << event;
  }
}

TEST(InkAnswer, DeletionWithoutAListOfIntegersIsSkippedAsAWhole) {
  EXPECT_EQ(eventsOf(R"([{"t":"del"},{"t":"del","ids":7},{"t":"del","ids":"7"},
                         {"t":"del","ids":[7,"8"]},{"t":"del","ids":[7,8.5]},
                         {"t":"del","ids":[7,null]},{"t":"del","ids":{"7":7}}])"),
            Events{});
  EXPECT_EQ(eventsOf(R"([{"t":"del","ids":[]}])"), (Events{DeleteStrokes{}}));
}

TEST(InkAnswer, DeletionsInARowAreJoined) {
  EXPECT_EQ(eventsOf(R"([{"t":"del","ids":[1,2]},{"t":"del","ids":[]},{"t":"del","ids":[1,3]},
                         {"t":"clear"},{"t":"del","ids":[4]}])"),
            (Events{DeleteStrokes{{1, 2, 1, 3}}, ClearInk{}, DeleteStrokes{{4}}}));
}

TEST(InkAnswer, CoordinateBeyondEveryNumberCountsAsMissing) {
  EXPECT_EQ(eventsOf(R"([{"t":"begin","id":1,"x":1e400,"y":0},{"t":"laser","x":0,"y":-1e400}])"),
            Events{});
  EXPECT_FALSE(parse(R"({"seq":1,"events":[{"t":"laser","x":NaN,"y":0}]})"));
}

TEST(InkAnswer, ListWithSomethingElseThanObjectsHasNoEventsAtAll) {
  EXPECT_EQ(eventsOf(R"([{"t":"clear"},5])"), Events{});
  EXPECT_EQ(eventsOf(R"([{"t":"clear"},null,{"t":"laserend"}])"), Events{});
}

TEST(InkAnswer, TooDeeplyNestedAnswerIsNone) {
  const std::string brackets(100'000, '[');
  EXPECT_FALSE(parse(R"({"seq":1,"events":)" + brackets));
}

}  // namespace
}  // namespace torvane
