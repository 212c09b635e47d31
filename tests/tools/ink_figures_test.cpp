#include "torvane_ipad/ink_figures.h"

#include <gtest/gtest.h>

#include <cmath>

namespace torvane::ipad {
namespace {

TEST(InkFigures, KnowsTheFiguresItNames) {
  for (const auto* name : {"circle", "line", "spiral", "star", "wave"}) {
    EXPECT_TRUE(isFigure(name)) << name;
    EXPECT_NE(kFigureNames.find(name), kFigureNames.npos) << name;
  }
  EXPECT_FALSE(isFigure("square"));
  EXPECT_FALSE(isFigure(""));
}

TEST(InkFigures, StayOnTheSlide) {
  for (const auto* name : {"circle", "line", "spiral", "star", "wave"}) {
    for (const Point& point : figureStroke(name, 1000)) {
      EXPECT_TRUE(point.x > 0.1 && point.x < 0.9 && point.y > 0.1 && point.y < 0.9) << name;
    }
  }
}

TEST(InkFigures, StrokeHasAsManyPointsAsAskedFor) {
  EXPECT_EQ(figureStroke("star", 2).size(), 2U);
  EXPECT_EQ(figureStroke("star", 5000).size(), 5000U);
  EXPECT_EQ(figureStroke("star", 0).size(), 2U);
}

TEST(InkFigures, StrokeRunsFromTheBeginningToTheEnd) {
  const auto stroke = figureStroke("line", 3);
  EXPECT_EQ(stroke.front(), figurePoint("line", 0));
  EXPECT_EQ(stroke[1], figurePoint("line", 0.5));
  EXPECT_EQ(stroke.back(), figurePoint("line", 1));
}

TEST(InkFigures, CircleAndStarEndWhereTheyBegin) {
  for (const auto* name : {"circle", "star"}) {
    const auto stroke = figureStroke(name, 51);
    EXPECT_NEAR(stroke.front().x, stroke.back().x, 1e-9) << name;
    EXPECT_NEAR(stroke.front().y, stroke.back().y, 1e-9) << name;
  }
}

TEST(InkFigures, CircleIsRoundOnASlideOf16To9) {
  for (const Point& point : figureStroke("circle", 50)) {
    EXPECT_NEAR(std::hypot((point.x - 0.5) / 0.5625, point.y - 0.5), 0.35, 1e-9);
  }
}

}  // namespace
}  // namespace torvane::ipad
