#include "platform/linux/ink_shape.h"

#include <gtest/gtest.h>

#include <functional>

namespace torvane {
namespace {

QImage painted(int width, int height, const std::function<int(int x, int y)>& alpha) {
  QImage pixels(width, height, QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x)
      pixels.setPixel(x, y, qPremultiply(qRgba(255, 59, 48, alpha(x, y))));
  }
  return pixels;
}

QImage plain(int width, int height, int alpha) {
  return painted(width, height, [alpha](int, int) { return alpha; });
}

TEST(InkShape, HasThePixelsThatInkCoversByHalfOrMore) {
  for (const int width : {1, 7, 8, 9, 31, 33, 100}) {
    const auto alpha = [](int x, int y) { return (x * 37 + y * 101) % 256; };
    InkShape shape;
    shape.setSize({width + 20, 10});
    shape.replacePart({5, 2}, painted(width, 3, alpha));
    for (int y = 0; y < 10; ++y) {
      for (int x = 0; x < width + 20; ++x) {
        const bool isPainted = x >= 5 && x < 5 + width && y >= 2 && y < 5;
        const bool isInk = isPainted && alpha(x - 5, y - 2) >= 128;
        EXPECT_EQ(shape.bits().pixelIndex(x, y), isInk ? 1 : 0) << x << " " << y;
      }
    }
  }
}

TEST(InkShape, BeginsWithAChangeThatTakesAllAway) {
  InkShape shape;
  EXPECT_FALSE(shape.takeChange());
  shape.setSize({40, 30});
  const auto change = shape.takeChange();
  ASSERT_TRUE(change);
  EXPECT_TRUE(change->takesAway);
  EXPECT_EQ(change->where, QRect(0, 0, 40, 30));
  shape.setSize({40, 30});
  EXPECT_FALSE(shape.takeChange());
}

class ChangingInkShape : public testing::Test {
 protected:
  ChangingInkShape() {
    shape.setSize({40, 30});
    shape.replacePart({10, 10}, plain(5, 5, 255));
    static_cast<void>(shape.takeChange());
  }
  InkShape shape;
};

TEST_F(ChangingInkShape, TellsWhereInkWasAdded) {
  shape.replacePart({8, 8}, plain(7, 7, 255));  // over what is there
  shape.replacePart({20, 20}, plain(2, 2, 200));
  const auto change = shape.takeChange();
  ASSERT_TRUE(change);
  EXPECT_FALSE(change->takesAway);
  EXPECT_EQ(change->where, QRect(8, 8, 14, 14));
}

TEST_F(ChangingInkShape, TellsOfInkThatWasTakenAway) {
  shape.replacePart({10, 10}, plain(1, 1, 127));
  shape.replacePart({20, 20}, plain(2, 2, 200));
  const auto change = shape.takeChange();
  ASSERT_TRUE(change);
  EXPECT_TRUE(change->takesAway);
  EXPECT_EQ(change->where, QRect(10, 10, 12, 12));
}

TEST_F(ChangingInkShape, TellsNothingOfWhatStaysTheSame) {
  shape.replacePart({10, 10}, plain(5, 5, 140));
  shape.replacePart({0, 0}, plain(10, 10, 100));
  EXPECT_FALSE(shape.takeChange());
  EXPECT_FALSE(shape.takeChange());
}

TEST_F(ChangingInkShape, LeavesOutWhatIsOutsideTheWindow) {
  shape.replacePart({38, -2}, plain(10, 4, 255));
  const auto change = shape.takeChange();
  ASSERT_TRUE(change);
  EXPECT_EQ(change->where, QRect(38, 0, 2, 2));
}

}  // namespace
}  // namespace torvane
