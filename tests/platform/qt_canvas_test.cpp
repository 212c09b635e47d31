// The ink's constants, measured on pixels.

#include "platform/linux/qt_canvas.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/overlay_screen.h"

namespace torvane {
namespace {

QImage painted(OverlayView& view, double width, double height, double now = 0) {
  OverlayScreen screen(view, width, height);
  screen.now = now;
  EXPECT_EQ(screen.settle(), screen.painted());
  return screen.settle();
}

double alphaSumOfColumn(const QImage& image, int x) {
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) sum += qAlpha(image.pixel(x, y)) / 255.0;
  return sum;
}

double alphaSum(const QImage& image) {
  double sum = 0;
  for (int x = 0; x < image.width(); ++x) sum += alphaSumOfColumn(image, x);
  return sum;
}

void drawLine(OverlayView& view) {
  view.begin(1, {0.2, 0.5});
  view.append(1, {0.8, 0.5});
}

TEST(RenderedInk, IsFullyTransparentWithoutPictureStrokesAndLaser) {
  OverlayView view;
  EXPECT_EQ(alphaSum(painted(view, 320, 200)), 0);
}

TEST(RenderedInk, StrokesAre9Point6WideOnASlide1920Wide) {
  OverlayView view;
  drawLine(view);
  EXPECT_NEAR(alphaSumOfColumn(painted(view, 1920, 1080), 960), 9.6, 0.02);
}

TEST(RenderedInk, StrokesAreAtLeast3Wide) {
  OverlayView view;
  drawLine(view);
  EXPECT_NEAR(alphaSumOfColumn(painted(view, 400, 225), 200), 3.0, 0.02);
}

TEST(RenderedInk, IsTheSystemRed) {
  OverlayView view;
  drawLine(view);
  EXPECT_EQ(painted(view, 1920, 1080).pixelColor(960, 540), QColor(255, 59, 48));
}

TEST(RenderedInk, AStrokeOfOnePointShowsNothing) {
  OverlayView view;
  view.begin(1, {0.5, 0.5});
  EXPECT_EQ(alphaSum(painted(view, 400, 225)), 0);
}

TEST(RenderedInk, AnIdTwiceInTheOrderIsStrokedTwice) {
  OverlayView view;
  drawLine(view);
  const double once = alphaSumOfColumn(painted(view, 401, 226), 200);
  view.begin(1, {0.2, 0.5});
  view.append(1, {0.8, 0.5});
  ASSERT_EQ(view.order.size(), 2U);
  // The edges, half transparent, are denser the second time.
  EXPECT_GT(alphaSumOfColumn(painted(view, 401, 226), 200), once + 0.3);
}

TEST(RenderedInk, IsCutOffAtTheViewNotAtTheSlide) {
  OverlayView view;
  view.begin(1, {0.5, -0.05});  // above a slide that is letterboxed
  view.append(1, {1.2, -0.05});
  EXPECT_GT(alphaSum(painted(view, 1920, 1200)), 9000);
}

// The dot's two ovals: their size at full strength, and how strong they are at an age.
struct Dot {
  double coreAlpha, haloAlpha;
  double coreRadius, haloRadius;
};

Dot laserDot(double width, double height, double age) {
  OverlayView view;
  view.placeLaser({0.5, 0.5}, 10);
  const QImage image = painted(view, width, height, 10 + age);
  const int x = static_cast<int>(width / 2), y = static_cast<int>(height / 2);
  const auto alphaAt = [&](double fromCentre) {
    return qAlpha(image.pixel(x + static_cast<int>(fromCentre), y)) / 255.0;
  };
  const double radius = std::max(width * 0.011, 8.0);
  const double halo = alphaAt(1.4 * radius), both = alphaAt(0);
  int lit = 0, core = 0;
  for (int i = 0; i < width; ++i) {
    lit += qAlpha(image.pixel(i, y)) > 0 ? 1 : 0;
    core += qAlpha(image.pixel(i, y)) / 255.0 > (halo + both) / 2 ? 1 : 0;
  }
  // both = halo + core × (1 − halo)
  return {halo < 1 ? (both - halo) / (1 - halo) : 0, halo, core / 2.0, lit / 2.0};
}

TEST(RenderedLaser, Has21Point12RadiusOnASlide1920Wide) {
  const Dot dot = laserDot(1920, 1080, 0);
  EXPECT_NEAR(dot.coreRadius, 21.12, 0.7);
  EXPECT_NEAR(dot.haloRadius, 1.8 * 21.12, 1);
}

TEST(RenderedLaser, HasAtLeast8Radius) {
  const Dot dot = laserDot(400, 226, 0);
  EXPECT_NEAR(dot.coreRadius, 8, 0.7);
  EXPECT_NEAR(dot.haloRadius, 1.8 * 8, 1);
}

TEST(RenderedLaser, IsFullyStrongUntil0Point4Seconds) {
  for (const double age : {0.0, 0.39, 0.4}) {
    const Dot dot = laserDot(1920, 1080, age);
    EXPECT_NEAR(dot.haloAlpha, 0.35, 0.005) << age;
    EXPECT_NEAR(dot.coreAlpha, 0.95, 0.01) << age;
  }
}

TEST(RenderedLaser, IsHalfAsStrongAt0Point65Seconds) {
  const Dot dot = laserDot(1920, 1080, 0.65);
  EXPECT_NEAR(dot.haloAlpha, 0.175, 0.005);
  EXPECT_NEAR(dot.coreAlpha, 0.475, 0.01);
}

TEST(RenderedLaser, IsGoneAt0Point9Seconds) {
  OverlayView view;
  view.placeLaser({0.5, 0.5}, 0);
  EXPECT_GT(alphaSum(painted(view, 1920, 1080, 0.85)), 0);
  EXPECT_EQ(alphaSum(painted(view, 1920, 1080, 0.9)), 0);
}

TEST(RenderedLaser, LeavesNothingWhereItWas) {
  OverlayView view;
  OverlayScreen screen(view, 800, 450);
  for (int i = 0; i < 10; ++i) {
    view.placeLaser({0.1 * i, 0.5}, screen.now);
    view.setNeedsDisplay();
    ASSERT_EQ(screen.settle(), screen.painted());
  }
}

TEST(RenderedPicture, FillsTheSlideAndLiesUnderTheInk) {
  OverlayView view;
  QImage image(2, 2, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::blue);
  view.setOverlayImage(std::make_shared<QtPicture>(image));
  drawLine(view);
  const QImage shown = painted(view, 400, 300);
  EXPECT_EQ(shown.pixelColor(200, 150), QColor(255, 59, 48));
  EXPECT_EQ(shown.pixelColor(200, 100), QColor(Qt::blue));
  EXPECT_EQ(qAlpha(shown.pixel(200, 36)), 0);  // the slide begins at 37.5
  EXPECT_EQ(shown.pixelColor(200, 38), QColor(Qt::blue));
}

std::shared_ptr<QtPicture> pictureOf(int width, int height,
                                     const std::function<QRgb(int x, int y)>& colour) {
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) image.setPixel(x, y, colour(x, y));
  }
  return std::make_shared<QtPicture>(image);
}

TEST(RenderedPicture, BeginsAndEndsAtFractionsOfAPixel) {
  OverlayView view;
  view.setOverlayImage(pictureOf(3, 5, [](int, int) { return qRgb(0, 0, 255); }));
  const QImage shown = painted(view, 400, 300);  // from 37.5 to 262.5
  for (const int x : {0, 200, 399}) {
    EXPECT_EQ(qAlpha(shown.pixel(x, 36)), 0);
    EXPECT_NEAR(qAlpha(shown.pixel(x, 37)), 127.5, 2);
    EXPECT_EQ(qAlpha(shown.pixel(x, 38)), 255);
    EXPECT_EQ(qAlpha(shown.pixel(x, 261)), 255);
    EXPECT_NEAR(qAlpha(shown.pixel(x, 262)), 127.5, 2);
    EXPECT_EQ(qAlpha(shown.pixel(x, 263)), 0);
  }
  EXPECT_NEAR(alphaSum(shown), 400 * 225, 400 * 0.02);
}

TEST(RenderedPicture, LiesWhereTheInkOverItLies) {
  OverlayView view;
  // The picture's middle row of three, and a line through its upper edge.
  view.setOverlayImage(pictureOf(
      1, 300, [](int, int y) { return y >= 100 && y < 200 ? qRgba(0, 0, 255, 255) : 0; }));
  const double sum = alphaSumOfColumn(painted(view, 401, 300), 200);
  EXPECT_NEAR(sum, 401 * 0.5625 / 3, 0.1);
}

TEST(RenderedPicture, IsEnlargedSmoothly) {
  OverlayView view;
  view.setOverlayImage(pictureOf(2, 1, [](int x, int) { return qRgb(255 * x, 0, 0); }));
  const QImage shown = painted(view, 400, 225);
  int last = 0, steps = 0;
  for (int x = 0; x < 400; ++x) {
    const int red = qRed(shown.pixel(x, 100));
    ASSERT_GE(red, last) << x;
    EXPECT_LE(red - last, 4) << x;
    steps += red != last ? 1 : 0;
    last = red;
  }
  EXPECT_EQ(last, 255);
  EXPECT_GT(steps, 100);
}

TEST(RenderedPicture, IsMadeSmallerSmoothly) {
  OverlayView view;
  view.setOverlayImage(pictureOf(1600, 900, [](int x, int y) {
    return (x + y) % 2 == 0 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
  }));
  const QImage shown = painted(view, 320, 180);
  for (int i = 10; i < 170; i += 7) EXPECT_NEAR(qRed(shown.pixel(i, i)), 127, 30) << i;
}

TEST(QtCanvas, DrawsInPixelsOnAFineScreen) {
  OverlayView view;
  drawLine(view);
  OverlayScreen screen(view, 960, 540, 2);
  const QImage& image = screen.settle();
  EXPECT_EQ(image.size(), QSize(1920, 1080));
  EXPECT_NEAR(alphaSumOfColumn(image, 960), 9.6, 0.02);
}

}  // namespace
}  // namespace torvane
