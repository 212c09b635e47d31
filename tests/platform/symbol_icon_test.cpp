#include "platform/linux/symbol_icon.h"

#include <gtest/gtest.h>

#include <QImage>

namespace torvane {
namespace {

constexpr const char* kRight = "dot.radiowaves.right";
constexpr const char* kBoth = "dot.radiowaves.left.and.right";

QImage picture(const std::string& name, bool isDimmed = false,
               const QPalette& palette = QPalette(Qt::black, Qt::white), int side = 22) {
  return symbolIcon(name, palette, isDimmed).pixmap(side).toImage();
}

// How much of the picture's left or right half is covered, from 0 to 1.
double coverage(const QImage& image, bool isLeft) {
  double sum = 0;
  const int half = image.width() / 2;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < half; ++x) {
      sum += image.pixelColor(isLeft ? x : image.width() - 1 - x, y).alphaF();
    }
  }
  return sum / half / image.height();
}

int strongestAlpha(const QImage& image) {
  int strongest = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      strongest = std::max(strongest, image.pixelColor(x, y).alpha());
    }
  }
  return strongest;
}

TEST(SymbolIconTest, TheTwoSymbolsDiffer) {
  EXPECT_NE(picture(kRight), picture(kBoth));
}

TEST(SymbolIconTest, WavesGoToTheRightOrToBothSides) {
  const QImage both = picture(kBoth);
  EXPECT_NEAR(coverage(both, true), coverage(both, false), 0.01);
  const QImage right = picture(kRight);
  EXPECT_GT(coverage(right, false), coverage(right, true));
  EXPECT_GT(coverage(right, true), 0.1);
}

TEST(SymbolIconTest, DimmedIsTheSamePictureButFaint) {
  const QImage plain = picture(kRight);
  const QImage dimmed = picture(kRight, true);
  EXPECT_EQ(strongestAlpha(plain), 255);
  EXPECT_NEAR(strongestAlpha(dimmed), 140, 2);
  EXPECT_NEAR(coverage(dimmed, false), coverage(plain, false) * 0.55, 0.01);
}

TEST(SymbolIconTest, FollowsLightAndDarkDesktops) {
  const QImage onLight = picture(kBoth, false, QPalette(Qt::black, Qt::white));
  QPalette dark;
  dark.setColor(QPalette::WindowText, Qt::white);
  dark.setColor(QPalette::Window, Qt::black);
  const QImage onDark = picture(kBoth, false, dark);
  EXPECT_LT(onLight.pixelColor(11, 11).lightness(), 60);
  EXPECT_GT(onDark.pixelColor(11, 11).lightness(), 195);
}

TEST(SymbolIconTest, IsSharpInEveryPanelSize) {
  for (const int side : {16, 22, 24, 32, 44, 48, 64}) {
    EXPECT_EQ(picture(kRight, false, QPalette(), side).width(), side);
  }
}

TEST(SymbolIconTest, AnUnknownSymbolHasNoPicture) {
  EXPECT_TRUE(symbolIcon("star", QPalette(), false).isNull());
}

}  // namespace
}  // namespace torvane
