#include "ink/overlay_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fakes/recording_canvas.h"

namespace torvane {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A display that keeps what was asked for, and draws it when it is told to.
class RecordingDisplay final : public OverlayDisplay {
 public:
  explicit RecordingDisplay(OverlayView& view, double width = 1920, double height = 1080)
      : view_(view), whole_{0, 0, width, height} {
    view_.setDisplay(this);
    view_.setSize(width, height);
  }

  void invalidate(const Rect& part) override {
    ++requests;
    if (!part.isEmpty()) asked.push_back(part);
  }

  // Everything, until nothing is asked for. Returns how many draws that took.
  int settle(double now = 0) {
    int draws = 0;
    asked.push_back(whole_);
    for (; !asked.empty(); ++draws) {
      Rect dirty;
      for (const Rect& part : std::exchange(asked, {})) dirty = united(dirty, part);
      view_.draw(canvas, dirty, now);
    }
    return draws;
  }

  int requests = 0;
  std::vector<Rect> asked;
  RecordingCanvas canvas;

 private:
  OverlayView& view_;
  Rect whole_;
};

OverlayView viewOf(double width, double height, double aspect = 0.5625) {
  OverlayView view;
  view.setSize(width, height);
  view.setAspect(aspect);
  return view;
}

std::vector<RecordingCanvas::Call> drawn(const OverlayView& view, double now = 0) {
  RecordingCanvas canvas;
  view.drawPlainly(canvas, now);
  return canvas.calls;
}

void line(OverlayView& view, std::int64_t id, const std::vector<Point>& points) {
  view.begin(id, points.at(0));
  for (std::size_t i = 1; i < points.size(); ++i) view.append(id, points[i]);
}

void expectNear(const Rect& actual, const Rect& expected) {
  EXPECT_NEAR(actual.x, expected.x, 0.005);
  EXPECT_NEAR(actual.y, expected.y, 0.005);
  EXPECT_NEAR(actual.width, expected.width, 0.005);
  EXPECT_NEAR(actual.height, expected.height, 0.005);
}

TEST(OverlayView, StartsEmptyWithA16To9Slide) {
  const OverlayView view;
  EXPECT_TRUE(view.strokes.empty());
  EXPECT_TRUE(view.order.empty());
  EXPECT_FALSE(view.laser);
  EXPECT_EQ(view.laserAt, 0);
  EXPECT_EQ(view.aspect, 0.5625);
  EXPECT_EQ(view.overlayImage, nullptr);
}

TEST(OverlayView, LetterboxesASlideInATallerView) {
  EXPECT_EQ(viewOf(1920, 1200).slideRect(), (Rect{0, 60, 1920, 1080}));
  EXPECT_EQ(viewOf(1600, 1200).slideRect(), (Rect{0, 150, 1600, 900}));
}

TEST(OverlayView, FillsAViewOfTheSlidesOwnShape) {
  EXPECT_EQ(viewOf(1600, 1200, 0.75).slideRect(), (Rect{0, 0, 1600, 1200}));
}

TEST(OverlayView, PillarboxesASlideTallerThanWide) {
  expectNear(viewOf(1000, 1000, 1.5).slideRect(), {166.67, 0, 666.67, 1000});
}

TEST(OverlayView, DrawsNothingWithoutPictureStrokesAndLaser) {
  EXPECT_TRUE(drawn(viewOf(1920, 1080)).empty());
}

TEST(OverlayView, DrawsPictureThenStrokesThenHaloThenCore) {
  OverlayView view = viewOf(1920, 1200);
  view.setOverlayImage(std::make_shared<PlainPicture>());
  line(view, 1, {{0, 0}, {1, 1}});
  view.placeLaser({0.5, 0.5}, 0);
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 4U);
  EXPECT_EQ(calls[0].what, "picture");
  EXPECT_EQ(calls[0].rect, (Rect{0, 60, 1920, 1080}));
  EXPECT_EQ(calls[1].what, "lines");
  EXPECT_EQ(calls[2].what, "oval");
  EXPECT_GT(calls[2].rect.width, calls[3].rect.width);
}

TEST(OverlayView, MapsFractionsIntoTheSlideAndBeyond) {
  OverlayView view = viewOf(1920, 1200);
  line(view, 1, {{0, 0}, {1, 1}, {0.5, -0.02}});
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].lines.points,
            (std::vector<Point>{{0, 60}, {1920, 1140}, {960, 60 - 0.02 * 1080}}));
  EXPECT_EQ(calls[0].lines.starts, std::vector<std::size_t>{0});
}

TEST(OverlayView, StrokesAre9Point6WideOnASlide1920Wide) {
  OverlayView view = viewOf(1920, 1080);
  line(view, 1, {{0, 0}, {1, 1}});
  EXPECT_DOUBLE_EQ(drawn(view).at(0).value, 9.6);
}

TEST(OverlayView, StrokesAreAtLeast3Wide) {
  OverlayView view = viewOf(400, 225);
  line(view, 1, {{0, 0}, {1, 1}});
  EXPECT_EQ(drawn(view).at(0).value, 3.0);
}

TEST(OverlayView, AStrokeOfOnePointDrawsNothing) {
  OverlayView view = viewOf(400, 225);
  view.begin(1, {0.5, 0.5});
  EXPECT_TRUE(drawn(view).empty());
}

TEST(OverlayView, StrokesAnIdOncePerPlaceInTheOrder) {
  OverlayView view = viewOf(1920, 1080);
  line(view, 7, {{0, 0}, {1, 0}});
  line(view, 7, {{0, 1}, {1, 1}});
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{7, 7}));
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].lines.points, (std::vector<Point>{{0, 1080}, {1920, 1080}}));
  EXPECT_EQ(calls[0].lines.points, calls[1].lines.points);
}

TEST(OverlayView, RemovesEveryPlaceOfAnIdAndKeepsTheOthersOrder) {
  OverlayView view = viewOf(1920, 1080);
  for (const std::int64_t id : {1, 2, 3, 2, 4, 5}) view.begin(id, {0, 0});
  view.remove({2, 4, 2, 99});
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{1, 3, 5}));
  EXPECT_EQ(view.strokes.size(), 3U);
}

TEST(OverlayView, APointWithoutItsStrokeChangesNothing) {
  OverlayView view = viewOf(1920, 1080);
  view.append(3, {0, 0});
  EXPECT_TRUE(view.strokes.empty());
}

TEST(OverlayView, ClearingInkKeepsPictureAspectAndLaserTime) {
  OverlayView view = viewOf(1920, 1080, 0.75);
  const auto picture = std::make_shared<PlainPicture>();
  view.setOverlayImage(picture);
  line(view, 1, {{0, 0}, {1, 1}});
  view.placeLaser({0, 0}, 5);
  view.clearInk();
  EXPECT_TRUE(view.strokes.empty());
  EXPECT_TRUE(view.order.empty());
  EXPECT_FALSE(view.laser);
  EXPECT_EQ(view.laserAt, 5);
  EXPECT_EQ(view.aspect, 0.75);
  EXPECT_EQ(view.overlayImage, picture);
}

// The laser

TEST(OverlayLaser, HasRadius21Point12OnASlide1920Wide) {
  OverlayView view = viewOf(1920, 1080);
  view.placeLaser({0.5, 0.5}, 0);
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 2U);
  expectNear(calls[0].rect, {960 - 38.016, 540 - 38.016, 76.032, 76.032});
  expectNear(calls[1].rect, {960 - 21.12, 540 - 21.12, 42.24, 42.24});
}

TEST(OverlayLaser, HasRadius8AtLeast) {
  OverlayView view = viewOf(400, 225);
  view.placeLaser({0, 0}, 0);
  EXPECT_EQ(drawn(view).at(1).rect, (Rect{-8, -8, 16, 16}));
}

TEST(OverlayLaser, IsFullyStrongUpTo0Point4Seconds) {
  OverlayView view = viewOf(1920, 1080);
  view.placeLaser({0.5, 0.5}, 0);
  for (const double age : {0.0, 0.39, 0.4}) {
    const auto calls = drawn(view, age);
    EXPECT_DOUBLE_EQ(calls.at(0).value, 0.35);
    EXPECT_DOUBLE_EQ(calls.at(1).value, 0.95);
  }
}

TEST(OverlayLaser, IsHalfAsStrongAt0Point65Seconds) {
  OverlayView view = viewOf(1920, 1080);
  view.placeLaser({0.5, 0.5}, 0);
  const auto calls = drawn(view, 0.65);
  EXPECT_DOUBLE_EQ(calls.at(0).value, 0.175);
  EXPECT_DOUBLE_EQ(calls.at(1).value, 0.475);
}

TEST(OverlayLaser, IsNotDrawnFrom0Point9Seconds) {
  OverlayView view = viewOf(1920, 1080);
  view.placeLaser({0.5, 0.5}, 0);
  EXPECT_EQ(drawn(view, 0.89).size(), 2U);
  EXPECT_TRUE(drawn(view, 0.9).empty());
}

// What asks for a redraw, and of what

TEST(OverlayRedraw, AsksForTheSurroundingsOfANewPoint) {
  OverlayView view;
  RecordingDisplay display(view);
  line(view, 1, {{0.5, 0.5}, {0.51, 0.5}});
  display.settle();
  view.append(1, {0.52, 0.5});
  EXPECT_TRUE(display.asked.empty());
  view.setNeedsDisplay();
  ASSERT_EQ(display.asked.size(), 1U);
  EXPECT_TRUE(contains(display.asked[0], {0.51 * 1920 - 4.8, 540 - 4.8, 0.01 * 1920 + 9.6, 9.6}));
  EXPECT_LT(display.asked[0].area(), 1200);
}

TEST(OverlayRedraw, AsksForNothingNewWhenNothingChanged) {
  OverlayView view;
  RecordingDisplay display(view);
  display.settle();
  display.requests = 0;
  view.append(3, {0, 0});
  view.setNeedsDisplay();
  EXPECT_GE(display.requests, 1);
  EXPECT_TRUE(display.asked.empty());
}

TEST(OverlayRedraw, AsksForWhereTheDotWasAndWhereItIs) {
  OverlayView view;
  RecordingDisplay display(view);
  view.placeLaser({0.2, 0.5}, 0);
  display.settle();
  view.placeLaser({0.8, 0.5}, 0);
  view.setNeedsDisplay();
  ASSERT_EQ(display.asked.size(), 2U);
  EXPECT_TRUE(contains(display.asked[0], {384 - 38, 540 - 38, 76, 76}));
  EXPECT_TRUE(contains(display.asked[1], {1536 - 38, 540 - 38, 76, 76}));
}

TEST(OverlayRedraw, AsksForAFadedDotUntilItIsWiped) {
  OverlayView view;
  RecordingDisplay display(view);
  view.placeLaser({0.2, 0.5}, 0);
  display.settle(0.89);
  view.wipeFadedLaser(0.89);
  EXPECT_TRUE(display.asked.empty());
  view.wipeFadedLaser(0.9);
  ASSERT_EQ(display.asked.size(), 1U);
  EXPECT_TRUE(contains(display.asked[0], {384 - 38, 540 - 38, 76, 76}));
  display.settle(0.9);
  view.wipeFadedLaser(1);
  EXPECT_TRUE(display.asked.empty());
}

TEST(OverlayRedraw, RepaintsOnlyWhatADeletedStrokeTouched) {
  OverlayView view;
  RecordingDisplay display(view);
  line(view, 1, {{0.1, 0.1}, {0.9, 0.9}});
  line(view, 2, {{0.1, 0.4}, {0.2, 0.4}});
  line(view, 3, {{0.8, 0.2}, {0.9, 0.2}});
  display.settle();
  view.remove({2});
  display.canvas.calls.clear();
  view.setNeedsDisplay();
  ASSERT_EQ(display.asked.size(), 1U);
  EXPECT_LT(display.asked[0].height, 20);
  EXPECT_LT(display.asked[0].width, 220);
}

TEST(OverlayRedraw, SplitsALongRebuildIntoManyDraws) {
  OverlayView view;
  RecordingDisplay display(view);
  std::vector<Point> points;
  for (int i = 0; i < 100; ++i) points.push_back({0.3 + 0.002 * i, 0.5 + 0.001 * (i % 7)});
  for (int id = 0; id < 2000; ++id) line(view, id, points);
  EXPECT_GT(display.settle(), 2);
  EXPECT_TRUE(view.isSettled());
}

// What would hang, overflow or stop a careless drawing

TEST(OverlayGuard, DrawsNothingForAnAspectThatMakesNoRectangle) {
  for (const double aspect :
       {-1.0, -1e-9, -0.0, kInfinity, -kInfinity, std::nan(""), -1e308, 1e-320 * -1}) {
    OverlayView view = viewOf(1920, 1080, aspect);
    view.setOverlayImage(std::make_shared<PlainPicture>());
    line(view, 1, {{0, 0}, {1, 1}});
    view.placeLaser({0.5, 0.5}, 0);
    EXPECT_TRUE(drawn(view).empty()) << aspect;
  }
}

TEST(OverlayGuard, DrawsAFlatSlideForAspect0) {
  OverlayView view = viewOf(1920, 1080, 0);
  line(view, 1, {{0, 0}, {1, 1}});
  EXPECT_EQ(drawn(view).at(0).lines.points, (std::vector<Point>{{0, 540}, {1920, 540}}));
}

TEST(OverlayGuard, CutsSegmentsALittleOutsideTheView) {
  OverlayView view = viewOf(1920, 1080);
  line(view, 1, {{0.5, 0.5}, {1e308, 0.5}, {-1e308, 0.5}, {0.5, 0.25}});
  const auto calls = drawn(view);
  for (const Point& point : calls.at(0).lines.points) {
    EXPECT_LT(std::abs(point.x), 2000);
    EXPECT_LT(std::abs(point.y), 1200);
  }
}

TEST(OverlayGuard, LeavesOutSegmentsThatMissTheView) {
  OverlayView view = viewOf(1920, 1080);
  line(view, 1, {{-1, 0.5}, {0.5, 3}, {2, 0.5}, {2, 2}});
  EXPECT_TRUE(drawn(view).empty());
}

TEST(OverlayGuard, LeavesOutSegmentsWithoutANumber) {
  OverlayView view = viewOf(1920, 1080);
  line(view, 1, {{0, 0}, {0.5, 0}, {std::nan(""), 0}, {0.5, kInfinity}, {0.5, 1}, {1, 1}});
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].lines.points,
            (std::vector<Point>{{0, 0}, {960, 0}, {960, 1080}, {1920, 1080}}));
  EXPECT_EQ(calls[0].lines.starts, (std::vector<std::size_t>{0, 2}));
}

TEST(OverlayGuard, DrawsNoLaserWithoutANumberOrOffTheView) {
  for (const Point& place :
       {Point{kInfinity, 0}, Point{0, std::nan("")}, Point{1e308, 0.5}, Point{0.5, 2}}) {
    OverlayView view = viewOf(1920, 1080);
    view.placeLaser(place, 0);
    EXPECT_TRUE(drawn(view).empty());
  }
}

TEST(OverlayGuard, DrawsAHugeStrokeInRunsThatShareAPoint) {
  OverlayView view = viewOf(1920, 1080);
  std::vector<Point> points;
  for (int i = 0; i < 100'000; ++i) points.push_back({i * 1e-5, 0.5});
  line(view, 1, points);
  const auto calls = drawn(view);
  ASSERT_EQ(calls.size(), 50U);
  EXPECT_EQ(calls[0].lines.points.size(), 2001U);
  EXPECT_EQ(calls[0].lines.points.back(), calls[1].lines.points.front());
}

TEST(OverlayGuard, Removes200000StrokesAtOnce) {
  OverlayView view;
  RecordingDisplay display(view);
  std::vector<std::int64_t> ids;
  for (int id = 0; id < 200'000; ++id) {
    view.begin(id, {0.5, 0.5});
    ids.push_back(id);
  }
  view.remove(ids);
  EXPECT_TRUE(view.order.empty());
  EXPECT_TRUE(view.strokes.empty());
  display.settle();
}

}  // namespace
}  // namespace torvane
