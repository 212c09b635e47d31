#include "ink/ink_layer.h"

#include <gtest/gtest.h>

#include <random>

#include "fakes/recording_canvas.h"

namespace torvane {
namespace {

constexpr Rect kView{0, 0, 1920, 1080};
constexpr double kTileArea = 480 * 270;

class InkLayerParts : public testing::Test {
 protected:
  std::vector<Rect> repairAll() {
    const InkIndex noStrokes;
    return layer.repair(RecordingCanvas(), {noStrokes, nullptr, kView, kView});
  }

  // As the strokes of a whole drawing come in, all over the view.
  std::vector<Rect> spoilAllOver(int count) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> left(0, 1860), top(0, 1020), size(1, 60);
    std::vector<Rect> areas;
    for (int i = 0; i < count; ++i) {
      areas.push_back({left(random), top(random), size(random), size(random)});
      layer.spoil(areas.back());
    }
    return areas;
  }

  // Whether a single part has all of it.
  [[nodiscard]] bool isSpoiled(const Rect& area) const {
    const auto& parts = layer.spoiled();
    return std::any_of(parts.begin(), parts.end(),
                       [&](const Rect& part) { return contains(part, area); });
  }

  InkLayer layer;
};

TEST_F(InkLayerParts, KeepEverythingThatWasSpoiled) {
  (void)repairAll();
  for (const Rect& area : spoilAllOver(5000)) ASSERT_TRUE(isSpoiled(area));
}

TEST_F(InkLayerParts, OfAWholeDrawingCoverLittleMoreThanTheView) {
  (void)repairAll();
  (void)spoilAllOver(5000);
  double covered = 0;
  for (const Rect& part : layer.spoiled()) covered += part.area();
  EXPECT_LE(layer.spoiled().size(), 16U);
  EXPECT_LE(covered, 2 * kView.area());
}

TEST_F(InkLayerParts, AreNoMoreWhenPointsFollowEachOther) {
  (void)repairAll();
  for (int i = 0; i < 100; ++i) layer.spoil({500.0 + i, 500, 12, 12});
  EXPECT_EQ(layer.spoiled(), (std::vector<Rect>{{500, 500, 111, 12}}));
}

TEST_F(InkLayerParts, OfThePenAreRepairedBeforeAWholeDrawing) {
  (void)repairAll();
  (void)spoilAllOver(5000);
  const Rect pen{1500, 900, 12, 12};
  layer.spoil(pen);
  const auto repaired = repairAll();
  const auto hasPen = [&](const Rect& area) { return contains(area, pen); };
  const auto found = std::find_if(repaired.begin(), repaired.end(), hasPen);
  ASSERT_NE(found, repaired.end());
  EXPECT_LT(found - repaired.begin(), 4);
  EXPECT_LT(found->area(), kTileArea);
}

TEST_F(InkLayerParts, AreAllRepairedInTheEnd) {
  (void)repairAll();
  const auto areas = spoilAllOver(200);
  const auto repaired = repairAll();
  EXPECT_TRUE(layer.isSettled());
  for (const Rect& area : areas) {
    for (const Point corner : {Point{area.x, area.y}, Point{area.right(), area.bottom()}}) {
      EXPECT_TRUE(std::any_of(repaired.begin(), repaired.end(), [&](const Rect& part) {
        return contains(part, {corner.x, corner.y, 0, 0});
      }));
    }
  }
}

}  // namespace
}  // namespace torvane
