// Ink that leaves the slide for far away keeps its direction.

#include <gtest/gtest.h>

#include "fakes/recording_canvas.h"
#include "ink/ink_path.h"
#include "ink/overlay_view.h"

namespace torvane {
namespace {

constexpr double kWidth = 1600, kHeight = 900;
constexpr Point kMiddle{0.5, 0.5};

// The ends of what is seen of a line, in pixels; none when nothing is.
std::optional<Segment> drawn(const Point& from, const Point& to) {
  OverlayView view;
  view.setSize(kWidth, kHeight);
  view.begin(1, from);
  view.append(1, to);
  RecordingCanvas canvas;
  view.drawPlainly(canvas, 0);
  if (canvas.calls.empty()) return std::nullopt;
  const auto& points = canvas.calls.front().lines.points;
  return Segment{points.front(), points.back()};
}

void expectNear(const Point& a, const Point& b) {
  EXPECT_NEAR(a.x, b.x, 1e-3);
  EXPECT_NEAR(a.y, b.y, 1e-3);
}

TEST(FarInk, LeavesTheMiddleInItsDirection) {
  for (const double length : {10.0, 1e5, 1e7, 1e12, 1e300, 4e307}) {
    for (const Point& way : {Point{2, 1}, Point{-3, 1}, Point{4, -1}, Point{-1, -0.25}}) {
      SCOPED_TRACE(testing::Message() << length << " " << way.x << " " << way.y);
      const Point far{0.5 + length * way.x, 0.5 + length * way.y};
      const auto out = drawn(kMiddle, far);
      const auto in = drawn(far, kMiddle);
      ASSERT_TRUE(out && in);
      expectNear(out->from, {kWidth / 2, kHeight / 2});
      const double dx = out->to.x - out->from.x, dy = out->to.y - out->from.y;
      EXPECT_GT(std::abs(dx), kWidth / 2);
      EXPECT_GT(dx * way.x, 0);
      EXPECT_NEAR(dy / dx, way.y * kHeight / (way.x * kWidth), 1e-6);
      expectNear(in->from, out->to);
      expectNear(in->to, out->from);
    }
  }
}

TEST(FarInk, CrossesTheSlideWhereItsLineDoes) {
  for (const double far : {1e7, 1e15, 1e300, 1.7e308}) {
    SCOPED_TRACE(far);
    // Through the slide's top left corner, a pixel below the one before, and level.
    const auto diagonal = drawn({-far, -far / 2}, {far, far / 2});
    ASSERT_TRUE(diagonal);
    EXPECT_NEAR(diagonal->to.y / diagonal->to.x, kHeight / kWidth / 2, 1e-6);
    const auto level = drawn({far, 0.25}, {-far, 0.25});
    ASSERT_TRUE(level);
    expectNear({0, level->from.y}, {0, kHeight / 4});
    expectNear({0, level->to.y}, {0, kHeight / 4});
    EXPECT_GT(level->from.x, kWidth);
    EXPECT_LT(level->to.x, 0);
  }
}

TEST(FarInk, IsNotDrawnWhereItsLinePassesBy) {
  EXPECT_FALSE(drawn({3e6, 0.5}, {0.5, 3e6}));
  EXPECT_FALSE(drawn({2e6, 0.25}, {9e9, 0.75}));
  EXPECT_FALSE(drawn({-1e300, 2}, {1e300, 2}));
  EXPECT_FALSE(drawn({-1e9, 1e9 + 3e6}, {1e9, 3e6 - 1e9}));
  EXPECT_TRUE(drawn({-1e9, 1e9 + 1}, {1e9, 1 - 1e9}));  // from corner to corner
}

TEST(FarInk, GoesOnFromWhereItWasNear) {
  OverlayView view;
  view.setSize(kWidth, kHeight);
  view.begin(1, {0.25, 0.5});
  view.append(1, kMiddle);
  view.append(1, {0.5, 1e9});
  view.append(1, {0.75, 0.5});
  RecordingCanvas canvas;
  view.drawPlainly(canvas, 0);
  ASSERT_EQ(canvas.calls.size(), 1U);
  EXPECT_EQ(canvas.calls[0].lines.starts, (std::vector<std::size_t>{0, 3}));  // left and came back
}

TEST(FarInk, PartThatIsNearIsTheWholeOfAUsualLine) {
  const auto part = nearPart({{-1e6, 0}, {1e6, 1e6}});
  ASSERT_TRUE(part);
  EXPECT_EQ(part->from, (Point{-1e6, 0}));
  EXPECT_EQ(part->to, (Point{1e6, 1e6}));
}

}  // namespace
}  // namespace torvane
