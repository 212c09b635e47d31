#include "ink/ink_events.h"

#include <gtest/gtest.h>

#include "fakes/fake_ink.h"
#include "ink/ink_answer.h"

namespace torvane {
namespace {

class InkEvents : public testing::Test {
 protected:
  OverlayView view;

  // Applies a JSON list of events; whether a redraw is due after it.
  bool apply(const std::string& events, double now = 0) {
    const auto answer = parseInkAnswer(asBytes(R"({"seq":1,"events":)" + events + "}"));
    return isRedrawDue(view, applyEvents(view, answer.value().events, now), now);
  }
  void beginStrokes(std::int64_t first, std::int64_t last) {
    std::vector<InkEvent> events;
    for (auto id = first; id <= last; ++id) events.emplace_back(BeginStroke{id, {}});
    applyEvents(view, events, 0);
  }
};

TEST_F(InkEvents, StartWithNoInkAtAll) {
  EXPECT_TRUE(view.strokes.empty() && view.order.empty());
  EXPECT_FALSE(view.laser);
  EXPECT_EQ(view.laserAt, 0);
}

TEST_F(InkEvents, BeginAndPointsMakeStrokesInTheOrderTheyBegan) {
  apply(R"([{"t":"begin","id":9,"x":0.1,"y":0.2},{"t":"begin","id":-3,"x":0.5,"y":0.6},
            {"t":"pt","id":9,"x":0.3,"y":0.4}])");
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{9, -3}));
  EXPECT_EQ(view.strokes.at(9), (std::vector<Point>{{0.1, 0.2}, {0.3, 0.4}}));
  EXPECT_EQ(view.strokes.at(-3), (std::vector<Point>{{0.5, 0.6}}));
}

TEST_F(InkEvents, EmptyBatchChangesNothingAndAsksForARedrawOnlyWhileALaserDotIsAlive) {
  apply(R"([{"t":"begin","id":7,"x":0.1,"y":0.2}])", 9);
  EXPECT_FALSE(apply("[]", 10));
  apply(R"([{"t":"laser","x":0.5,"y":0.5}])", 10);
  EXPECT_TRUE(apply("[]", 10));
  EXPECT_TRUE(apply("[]", 10.89));
  EXPECT_FALSE(apply("[]", 10.91));
  EXPECT_EQ(view.laser, (Point{0.5, 0.5}));
  EXPECT_EQ(view.laserAt, 10);
  EXPECT_EQ(view.order, std::vector<std::int64_t>{7});
  EXPECT_EQ(view.strokes.at(7), (std::vector<Point>{{0.1, 0.2}}));
}

TEST_F(InkEvents, LaserDotOfExactlyNineTenthsIsDead) {
  view.laser = Point{0.5, 0.5};
  EXPECT_FALSE(isRedrawDue(view, false, 0.9));
}

TEST_F(InkEvents, EventsAskForARedrawWhenTheLaserDotIsDeadToo) {
  apply(R"([{"t":"laser","x":0.5,"y":0.5}])", 10);
  EXPECT_TRUE(apply(R"([{"t":"laserend"}])", 20));
  EXPECT_FALSE(apply("[]", 20));
}

TEST_F(InkEvents, PointBeforeAnyBeginIsIgnoredButAsksForARedraw) {
  EXPECT_TRUE(apply(R"([{"t":"pt","id":4,"x":0.1,"y":0.2}])"));
  EXPECT_TRUE(view.strokes.empty() && view.order.empty());
}

TEST_F(InkEvents, BeginTwiceReplacesThePointsAndListsTheIdTwice) {
  apply(R"([{"t":"begin","id":7,"x":0.1,"y":0.1},{"t":"pt","id":7,"x":0.2,"y":0.2},
            {"t":"begin","id":8,"x":0.3,"y":0.3},{"t":"begin","id":7,"x":0.4,"y":0.4}])");
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{7, 8, 7}));
  EXPECT_EQ(view.strokes.at(7), (std::vector<Point>{{0.4, 0.4}}));
}

TEST_F(InkEvents, DeletingAnIdThatBeganTwiceRemovesEveryOccurrence) {
  apply(R"([{"t":"begin","id":7,"x":0.1,"y":0.1},{"t":"begin","id":7,"x":0.4,"y":0.4}])");
  apply(R"([{"t":"del","ids":[7]}])");
  EXPECT_TRUE(view.strokes.empty());
  EXPECT_TRUE(view.order.empty());
}

TEST_F(InkEvents, DeletionKeepsTheOrderOfTheRest) {
  beginStrokes(1, 5);
  EXPECT_TRUE(apply(R"([{"t":"del","ids":[2,4]}])"));
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1, 3, 5}));
  EXPECT_EQ(view.strokes.count(2) + view.strokes.count(4), 0U);
  EXPECT_EQ(view.strokes.size(), 3U);
}

TEST_F(InkEvents, DeletingNothingOrUnknownIdsOnlyAsksForARedraw) {
  beginStrokes(1, 2);
  EXPECT_TRUE(apply(R"([{"t":"del","ids":[]}])"));
  EXPECT_TRUE(apply(R"([{"t":"del","ids":[3,3,4]}])"));
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1, 2}));
}

TEST_F(InkEvents, PointAfterADeletionIsIgnored) {
  beginStrokes(1, 1);
  apply(R"([{"t":"del","ids":[1]},{"t":"pt","id":1,"x":0.1,"y":0.1}])");
  EXPECT_TRUE(view.strokes.empty());
}

// Comparing each with each would take 40 billion steps, many times the test's time limit.
TEST_F(InkEvents, ManyDeletionsOverManyStrokesEndSoon) {
  beginStrokes(1, 200'000);
  DeleteStrokes deletion;
  for (std::int64_t id = 200'000; id > 1; --id) deletion.ids.push_back(id);
  applyEvents(view, std::vector<InkEvent>{deletion}, 0);
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1}));
  EXPECT_EQ(view.strokes.size(), 1U);
}

TEST_F(InkEvents, ManyDeletionsOfOneStrokeEachEndSoonToo) {
  beginStrokes(1, 200'000);
  std::string deletions = R"([{"t":"del","ids":[0]})";
  for (int id = 200'000; id > 1; --id) {
    deletions += R"(,{"t":"del","ids":[)" + std::to_string(id) + "]}";
  }
  apply(deletions + "]");
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1}));
}

TEST_F(InkEvents, WhatAnEngineUsuallyAnswersIsOneTurn) {
  EXPECT_EQ(countForOneTurn({}, 1'000), 0U);
  EXPECT_EQ(countForOneTurn(std::vector<InkEvent>(20'000, BeginStroke{}), 1'000), 20'000U);
}

TEST_F(InkEvents, MoreEventsThanATurnHoldsAreSplit) {
  const std::vector<InkEvent> events(120'000, AppendPoint{});
  EXPECT_EQ(countForOneTurn(events, 0), 50'000U);
}

TEST_F(InkEvents, DeletionsCountByTheirIdsAndByTheDrawingOrder) {
  const std::vector<InkEvent> deletions(100, DeleteStrokes{{1, 2, 3}});
  EXPECT_EQ(countForOneTurn(deletions, 0), 100U);
  EXPECT_EQ(countForOneTurn(deletions, 79'968), 5U);  // 1 + 3 + 9,996 steps each
}

TEST_F(InkEvents, ATurnTakesOneEventHoweverLarge) {
  const std::vector<InkEvent> deletions(2, DeleteStrokes{std::vector<std::int64_t>(200'000)});
  EXPECT_EQ(countForOneTurn(deletions, 200'000), 1U);
}

TEST_F(InkEvents, ClearEmptiesTheInkAndTheLaserDotButNotItsTime) {
  beginStrokes(1, 3);
  apply(R"([{"t":"laser","x":0.5,"y":0.5}])", 12);
  EXPECT_TRUE(apply(R"([{"t":"clear"}])", 13));
  EXPECT_TRUE(view.strokes.empty() && view.order.empty());
  EXPECT_FALSE(view.laser);
  EXPECT_EQ(view.laserAt, 12);
}

TEST_F(InkEvents, ClearLeavesPictureAndAspect) {
  view.setAspect(0.75);
  view.setOverlayImage(std::make_shared<FakePicture>(""));
  apply(R"([{"t":"clear"}])");
  EXPECT_EQ(view.aspect, 0.75);
  EXPECT_NE(view.overlayImage, nullptr);
}

TEST_F(InkEvents, LaserEndAgesAYoungDotToWhereItsFadeBegins) {
  apply(R"([{"t":"laser","x":0.5,"y":0.25}])", 100);
  apply(R"([{"t":"laserend"}])", 100.1);
  EXPECT_DOUBLE_EQ(view.laserAt, 99.7);
  EXPECT_EQ(view.laser, (Point{0.5, 0.25}));
}

TEST_F(InkEvents, LaserEndLeavesAnOldDotAsItIs) {
  apply(R"([{"t":"laser","x":0.5,"y":0.25}])", 100);
  apply(R"([{"t":"laserend"}])", 102);
  EXPECT_EQ(view.laserAt, 100);
}

TEST_F(InkEvents, LaserEndWithoutALaserOnlyLowersItsTime) {
  view.laserAt = 50;
  EXPECT_TRUE(apply(R"([{"t":"laserend"}])", 50));
  EXPECT_DOUBLE_EQ(view.laserAt, 49.6);
  EXPECT_FALSE(view.laser);
}

TEST_F(InkEvents, MovingLaserStaysYoung) {
  apply(R"([{"t":"laser","x":0.1,"y":0.1}])", 1);
  apply(R"([{"t":"laserend"},{"t":"laser","x":0.2,"y":0.2}])", 2);
  EXPECT_EQ(view.laser, (Point{0.2, 0.2}));
  EXPECT_EQ(view.laserAt, 2);
}

TEST_F(InkEvents, PointsOutsideTheSlideAreStoredUnchanged) {
  apply(R"([{"t":"begin","id":1,"x":1.2,"y":-0.5},{"t":"pt","id":1,"x":1e308,"y":-1e308},
            {"t":"laser","x":1.2,"y":7}])");
  EXPECT_EQ(view.strokes.at(1), (std::vector<Point>{{1.2, -0.5}, {1e308, -1e308}}));
  EXPECT_EQ(view.laser, (Point{1.2, 7}));
}

}  // namespace
}  // namespace torvane
