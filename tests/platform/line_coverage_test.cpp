#include "platform/linux/line_coverage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

namespace torvane {
namespace {

using Pixels = std::map<std::pair<int, int>, float>;

Pixels taken(LineCoverage& coverage) {
  Pixels pixels;
  coverage.take([&](int x, int y, const float* values, int count) {
    for (int i = 0; i < count; ++i) {
      if (values[i] > 0) pixels[{x + i, y}] = values[i];
    }
  });
  return pixels;
}

float columnSum(const Pixels& pixels, int x) {
  float sum = 0;
  for (const auto& [place, value] : pixels) sum += place.first == x ? value : 0;
  return sum;
}

TEST(LineCoverage, IsAsWideAsThePen) {
  for (const double width : {1.0, 3.0, 9.6}) {
    LineCoverage coverage(0, 0, 100, 40);
    coverage.setPenWidth(width);
    coverage.addLine(10, 20.3, 90, 20.3);
    EXPECT_NEAR(columnSum(taken(coverage), 50), width, 1e-4) << width;
  }
}

TEST(LineCoverage, HasRoundCaps) {
  LineCoverage coverage(0, 0, 60, 40);
  coverage.setPenWidth(10);
  coverage.addLine(20, 20, 40, 20);
  const Pixels pixels = taken(coverage);
  EXPECT_TRUE(pixels.contains({15, 20}));
  EXPECT_FALSE(pixels.contains({14, 20}));
  EXPECT_FALSE(pixels.contains({15, 16}));  // the corner that a square cap would fill
}

TEST(LineCoverage, DrawsADotForALineWithoutLength) {
  LineCoverage coverage(0, 0, 40, 40);
  coverage.setPenWidth(10);
  coverage.addLine(20, 20, 20, 20);
  float sum = 0;
  for (const auto& [place, value] : taken(coverage)) sum += value;
  EXPECT_NEAR(sum, 3.14159 * 5 * 5, 1);
}

TEST(LineCoverage, IsNoDenserWhereLinesOverlap) {
  LineCoverage once(0, 0, 60, 40), twice(0, 0, 60, 40);
  once.setPenWidth(7);
  once.addLine(10, 12.7, 50, 30.2);
  twice.setPenWidth(7);
  twice.addLine(10, 12.7, 50, 30.2);
  twice.addLine(10, 12.7, 50, 30.2);
  EXPECT_EQ(taken(once), taken(twice));
}

double distance(double x, double y, const double (&line)[4]) {
  const double dx = line[2] - line[0], dy = line[3] - line[1];
  const double t = ((x - line[0]) * dx + (y - line[1]) * dy) / (dx * dx + dy * dy);
  const double along = std::clamp(t, 0.0, 1.0);
  return std::hypot(x - line[0] - along * dx, y - line[1] - along * dy);
}

TEST(LineCoverage, FollowsTheDistanceInEveryDirection) {
  std::mt19937 random(9);
  std::uniform_real_distribution<double> place(-20, 120);
  for (int i = 0; i < 100; ++i) {
    const double line[] = {place(random), place(random), place(random), place(random)};
    LineCoverage coverage(0, 0, 100, 100);
    coverage.setPenWidth(9.6);
    coverage.addLine(line[0], line[1], line[2], line[3]);
    Pixels pixels = taken(coverage);
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        const double covered = std::clamp(5.3 - distance(x + 0.5, y + 0.5, line), 0.0, 1.0);
        ASSERT_NEAR((pixels[{x, y}]), covered, 1e-3) << x << ' ' << y;
      }
    }
  }
}

TEST(LineCoverage, IsTheSameWhereverTheAreaBegins) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> place(-300, 2200);
  LineCoverage whole(0, 0, 1920, 1080), part(701, 333, 97, 61);
  whole.setPenWidth(9.6);
  part.setPenWidth(9.6);
  for (int i = 0; i < 60; ++i) {
    const double line[] = {place(random), place(random), place(random), place(random)};
    for (auto* coverage : {&whole, &part}) {
      coverage->addLine(line[0], line[1], line[2], line[3]);
    }
  }
  const Pixels all = taken(whole), some = taken(part);
  ASSERT_GT(some.size(), 200U);
  for (const auto& [pixel, value] : some) ASSERT_EQ(all.at(pixel), value);
  for (const auto& [pixel, value] : all) {
    const bool inside =
        pixel.first >= 701 && pixel.first < 798 && pixel.second >= 333 && pixel.second < 394;
    ASSERT_EQ(inside, some.contains(pixel));
  }
}

TEST(LineCoverage, IsEmptyAfterItWasTaken) {
  LineCoverage coverage(0, 0, 60, 40);
  coverage.setPenWidth(9);
  coverage.addLine(0, 0, 60, 40);
  EXPECT_FALSE(taken(coverage).empty());
  EXPECT_TRUE(taken(coverage).empty());
}

}  // namespace
}  // namespace torvane
