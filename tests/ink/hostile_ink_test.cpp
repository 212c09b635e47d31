// What an engine, or whoever pretends to be one, could send to hang, overflow or stop the drawing.
// Work is counted, so that a slow computer does not matter.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "ink/ink_answer.h"

namespace torvane {
namespace {

constexpr double kWidth = 1920, kHeight = 1080;

// Sums up over all canvases of a drawing.
struct Work {
  std::size_t points = 0;
  std::size_t tiles = 0;
  double furthest = 0;  // from the view's centre, of any coordinate
};

class CountingCanvas final : public Canvas {
 public:
  explicit CountingCanvas(Work& work) : work_(work) {}

  [[nodiscard]] double pixelsPerPoint() const override { return 1; }
  void drawPicture(const Picture&, const Rect&) override {}
  void strokeLines(const Lines& lines, double) override {
    work_.points += lines.points.size();
    for (const Point& point : lines.points) {
      const double away = std::max(std::abs(point.x), std::abs(point.y));
      work_.furthest = std::isfinite(away) ? std::max(work_.furthest, away) : away;
    }
  }
  void fillOval(const Rect&, double) override { ++work_.points; }
  [[nodiscard]] std::unique_ptr<Canvas> makeLayer(const Rect&) const override {
    ++work_.tiles;
    return std::make_unique<CountingCanvas>(work_);
  }
  void copyLayer(const Canvas&, const Rect&) override {}

 private:
  Work& work_;
};

class HostileInk : public testing::Test {
 protected:
  HostileInk() { view.setSize(kWidth, kHeight); }

  void receive(const std::string& members) {
    const auto answer = parseInkAnswer(asBytes(R"({"seq":1,)" + members + "}"));
    ASSERT_TRUE(answer);
    view.setAspect(answer->aspect);
    applyEvents(view, answer->events, 0);
  }

  // Draws until everything is painted; the work of the draw that did most.
  Work settle() {
    Work most;
    draws = 0;
    do {
      Work work;
      CountingCanvas canvas(work);
      view.draw(canvas, {0, 0, kWidth, kHeight}, 0);
      most = {std::max(most.points, work.points), std::max(most.tiles, work.tiles),
              std::max(most.furthest, work.furthest)};
      ++draws;
    } while (!view.isSettled() && draws < 100'000);
    EXPECT_TRUE(view.isSettled());
    return most;
  }

  OverlayView view;
  int draws = 0;
};

std::string strokeEvents(int count, const std::function<std::string(int)>& place) {
  std::string events = R"("events":[{"t":"begin","id":1,)" + place(0) + "}";
  for (int i = 1; i < count; ++i) events += R"(,{"t":"pt","id":1,)" + place(i) + "}";
  return events + "]";
}

// Back and forth over the whole slide: no longer way per point is possible.
std::string zigzag(int i) {
  return i % 2 == 0 ? R"("x":0,"y":0)" : R"("x":1,"y":1)";
}

std::string farZigzag(int i) {
  return i % 2 == 0 ? R"("x":1e308,"y":-1e308)" : R"("x":-1e308,"y":1e308)";
}

TEST_F(HostileInk, CoordinatesOf1e308AreKeptAndCutToTheView) {
  receive(strokeEvents(5'000, farZigzag));
  EXPECT_EQ(view.strokes.at(1).at(1), (Point{-1e308, 1e308}));
  const Work most = settle();
  EXPECT_GT(most.points, 0U);
  EXPECT_LT(most.furthest, 2'000);
}

TEST_F(HostileInk, CoordinatesOf1e308CostNoMoreThanThoseInsideTheSlide) {
  receive(strokeEvents(5'000, zigzag));
  (void)settle();
  const int usualDraws = draws;
  receive(R"("events":[{"t":"clear"}])");
  receive(strokeEvents(5'000, farZigzag));
  (void)settle();
  EXPECT_LE(draws, 2 * usualDraws);
}

TEST_F(HostileInk, StrokeOf100000PointsIsDrawnInSmallPieces) {
  receive(strokeEvents(100'000, zigzag));
  EXPECT_EQ(view.strokes.at(1).size(), 100'000U);
  const Work most = settle();
  EXPECT_GT(draws, 100);
  EXPECT_LE(most.points, 2'001U);  // a run, whose end is always reached
}

TEST_F(HostileInk, OneMorePointOfALongStrokeRepaintsOneTile) {
  receive(strokeEvents(
      100'000, [](int i) { return R"("x":0.5,"y":)" + std::to_string(0.5 + 1e-4 * (i % 7)); }));
  (void)settle();
  receive(R"("events":[{"t":"pt","id":1,"x":0.5,"y":0.501}])");
  EXPECT_EQ(settle().tiles, 1U);
}

TEST_F(HostileInk, DeletionOf200000StrokesLeavesOnePaintedAnew) {
  std::string events =
      R"("events":[{"t":"begin","id":0,"x":0.1,"y":0.1},{"t":"pt","id":0,"x":0.2,"y":0.1})";
  std::string ids = "1";
  for (int id = 1; id <= 200'000; ++id) {
    const std::string head = R"("id":)" + std::to_string(id) + ",";
    events += R"(,{"t":"begin",)" + head + R"("x":0.5,"y":0.5},{"t":"pt",)" + head +
              R"("x":0.51,"y":0.5})";
    ids += "," + std::to_string(id);
  }
  receive(events + "]");
  (void)settle();
  const int drawsOfAll = draws;
  receive(R"("events":[{"t":"del","ids":[)" + ids + "]}]");
  EXPECT_EQ(view.order, (std::vector<std::int64_t>{0}));
  (void)settle();
  EXPECT_LT(draws, drawsOfAll);
}

TEST_F(HostileInk, AspectsThatMakeNoRectangleDrawNothing) {
  for (const auto* aspect : {"-1", "-1e308", "-5e-324"}) {
    receive(strokeEvents(5'000, zigzag) + R"(,"aspect":)" + aspect);
    Work work;
    CountingCanvas canvas(work);
    view.draw(canvas, {0, 0, kWidth, kHeight}, 0);
    EXPECT_EQ(work.points + work.tiles, 0U) << aspect;
  }
}

TEST_F(HostileInk, AspectsThatMakeAFlatOrNarrowSlideStayInTheView) {
  for (const auto* aspect : {"0", "5e-324", "1e308", "1e-9"}) {
    receive(strokeEvents(5'000, zigzag) + R"(,"aspect":)" + aspect);
    EXPECT_LT(settle().furthest, 2'000) << aspect;
  }
}

TEST_F(HostileInk, NumbersThatAreNoneAreNoPoints) {
  receive(R"("events":[{"t":"begin","id":1,"x":0,"y":0},{"t":"pt","id":1,"x":1e999,"y":0},
      {"t":"pt","id":1,"x":null,"y":0},{"t":"laser","x":-1e999,"y":0}])");
  EXPECT_EQ(view.strokes.at(1).size(), 1U);
  EXPECT_FALSE(view.laser);
  EXPECT_FALSE(parseInkAnswer(asBytes(R"({"seq":1,"events":[{"t":"laser","x":NaN,"y":0}]})")));
}

}  // namespace
}  // namespace torvane
