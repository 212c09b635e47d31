// What the overlay shows from its cache is, to the pixel, what painting it from nothing gives.

#include <gtest/gtest.h>

#include <random>

#include "support/ink_strokes.h"
#include "support/overlay_screen.h"

namespace torvane {
namespace {

std::shared_ptr<const Picture> chequered(int width, int height) {
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      image.setPixelColor(x, y,
                          QColor(x * 255 / width, y * 255 / height, 80, (x ^ y) & 8 ? 255 : 90));
    }
  }
  return std::make_shared<QtPicture>(image);
}

void drawStroke(OverlayView& view, std::int64_t id, const std::vector<Point>& points) {
  view.begin(id, points.front());
  for (std::size_t i = 1; i < points.size(); ++i) view.append(id, points[i]);
}

void fill(OverlayView& view, std::mt19937& random, int strokes, std::size_t points) {
  for (int id = 0; id < strokes; ++id) {
    drawStroke(view, id, wanderingStroke(random, points, 0.0016));
  }
}

// One thing that an engine may send, chosen by chance.
class RandomInk {
 public:
  RandomInk(OverlayView& view, unsigned seed) : view_(view), random_(seed) {}

  void next(double now) {
    const auto id = static_cast<std::int64_t>(below(12));
    switch (below(16)) {
      case 0:
        view_.remove({id, id + 1});
        break;
      case 1:
        view_.begin(id, anywhere());
        break;  // often one that exists
      case 2:
        view_.setAspect(below(8) ? 0.5625 : 0.75);
        break;
      case 3:
        view_.setOverlayImage(below(2) ? chequered(37, 23) : nullptr);
        break;
      case 4:
        if (below(6) == 0) view_.clearInk();
        break;
      case 5:
      case 6:
        view_.placeLaser(anywhere(), now);
        break;
      case 7:
        drawStroke(view_, id, wanderingStroke(random_, 2 + below(60), 0.02));
        break;
      default:
        view_.append(id, anywhere());
        break;
    }
    view_.setNeedsDisplay();
  }

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

 private:
  Point anywhere() {
    std::uniform_real_distribution<double> place(-0.2, 1.2);
    return {place(random_), place(random_)};
  }

  OverlayView& view_;
  std::mt19937 random_;
};

class CachedInk : public testing::TestWithParam<unsigned> {};
class CachedInkRebuild : public testing::TestWithParam<unsigned> {};

TEST_P(CachedInk, EqualsAFullRepaintAfterAnyEvents) {
  OverlayView view;
  OverlayScreen screen(view, 480 + GetParam() % 7, 300, GetParam() % 3 == 0 ? 1.25 : 1);
  RandomInk ink(view, GetParam());
  for (int step = 0; step < 100; ++step) {
    screen.now += 0.08;
    for (unsigned events = 1 + ink.below(4); events > 0; --events) ink.next(screen.now);
    ASSERT_EQ(screen.settle(), screen.painted()) << "step " << step;
  }
}

TEST_P(CachedInkRebuild, EqualsAFullRepaintWhenChangesComeMeanwhile) {
  OverlayView view;
  OverlayScreen screen(view, 960, 540);
  std::mt19937 random(GetParam());
  fill(view, random, 3000, 100);
  RandomInk ink(view, GetParam());
  int rebuilding = 0;
  for (int step = 0; step < 36; ++step) {
    if (step % 12 == 0) view.setAspect(view.aspect == 0.75 ? 0.5625 : 0.75);
    ink.next(screen.now);
    screen.drawOnce();
    rebuilding += view.isSettled() ? 0 : 1;
  }
  EXPECT_GT(rebuilding, 0);
  EXPECT_EQ(screen.settle(), screen.painted());
}

INSTANTIATE_TEST_SUITE_P(Seeds, CachedInk, testing::Range(1U, 9U));
INSTANTIATE_TEST_SUITE_P(Seeds, CachedInkRebuild, testing::Range(1U, 5U));

TEST(CachedInkCost, ANewPointRedrawsOnlyItsSurroundings) {
  OverlayView view;
  OverlayScreen screen(view, 1920, 1080);
  drawStroke(view, 1, {{0.5, 0.5}, {0.6, 0.5}});
  view.setNeedsDisplay();
  screen.settle();
  screen.drawnArea = 0;
  view.append(1, {0.605, 0.505});
  view.setNeedsDisplay();
  screen.settle();
  EXPECT_GT(screen.drawnArea, 0);
  EXPECT_LT(screen.drawnArea, 40 * 40);
}

TEST(CachedInkCost, ARedrawOfUnchangedInkDrawsNothing) {
  OverlayView view;
  OverlayScreen screen(view, 1920, 1080);
  drawStroke(view, 1, {{0.1, 0.1}, {0.9, 0.9}});
  view.setNeedsDisplay();
  screen.settle();
  screen.draws = 0;
  view.append(99, {0.5, 0.5});  // there is no such stroke
  view.setAspect(0.5625);
  view.setNeedsDisplay();
  screen.settle();
  EXPECT_EQ(screen.draws, 0);
}

TEST(CachedInkCost, ALongStrokeInRunsDiffersOnlyInEdgePixels) {
  OverlayView view;
  OverlayScreen screen(view, 960, 540);
  std::mt19937 random(3);
  const auto points = wanderingStroke(random, 9000, 0.0016);
  drawStroke(view, 1, points);
  Lines whole;
  for (const Point& p : points) whole.points.push_back({p.x * 960, p.y * 540});
  whole.starts = {0};
  QtCanvas once({0, 0, 960, 540}, 1);
  once.strokeLines(whole, 4.8);

  const QImage& inRuns = screen.settle();
  for (int y = 0; y < 540; ++y) {
    for (int x = 0; x < 960; ++x) {
      const int a = qAlpha(inRuns.pixel(x, y)), b = qAlpha(once.image().pixel(x, y));
      ASSERT_TRUE(a == b || (b > 0 && b < 255)) << x << "," << y << ": " << a << " and " << b;
    }
  }
}

}  // namespace
}  // namespace torvane
