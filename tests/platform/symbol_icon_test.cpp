#include "platform/linux/symbol_icon.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

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

// WCAG 2.1: relative luminance.
double luminance(const QColor& colour) {
  const auto part = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) +
         0.0722 * part(colour.blueF());
}

// Of the panel and those pixels of the picture on it that differ most, a tenth of what it covers.
double contrastOn(QRgb panel, const QImage& picture) {
  QImage shown(picture.size(), QImage::Format_RGB32);
  shown.fill(panel);
  QPainter(&shown).drawImage(0, 0, picture);
  const double ground = luminance(QColor(panel));
  std::vector<double> contrasts;
  for (int y = 0; y < shown.height(); ++y) {
    for (int x = 0; x < shown.width(); ++x) {
      if (picture.pixelColor(x, y).alpha() < 30) continue;
      const double here = luminance(shown.pixelColor(x, y));
      contrasts.push_back((std::max(here, ground) + 0.05) / (std::min(here, ground) + 0.05));
    }
  }
  std::sort(contrasts.rbegin(), contrasts.rend());
  return contrasts.empty() ? 1 : contrasts[contrasts.size() / 10];
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

TEST(SymbolIconTest, DimmedIsFainter) {
  EXPECT_EQ(strongestAlpha(picture(kRight)), 255);
  EXPECT_NEAR(strongestAlpha(picture(kRight, true)), 217, 2);
}

// Also where a panel shows how much is covered and no more.
TEST(SymbolIconTest, DimmedIsAnotherShape) {
  for (const char* name : {kRight, kBoth}) {
    for (const int side : {16, 22, 48}) {
      const QPalette palette(Qt::black, Qt::white);
      const QImage plain = picture(name, false, palette, side);
      const QImage dimmed = picture(name, true, palette, side);
      const double faintness = strongestAlpha(dimmed) / 255.0;
      int crossedOut = 0;
      for (int i = 0; i < side * side; ++i) {
        const QPoint at(i % side, i / side);
        const double clear = faintness * plain.pixelColor(at).alpha();
        if (std::abs(dimmed.pixelColor(at).alpha() - clear) > 100) ++crossedOut;
      }
      EXPECT_GT(crossedOut, side * side / 20) << name << side;
    }
  }
}

TEST(SymbolIconTest, CanBeMadeOutOnPanelsOfEitherKind) {
  QPalette light(Qt::black, QColor(0xef, 0xef, 0xef));
  QPalette dark(QColor(0xfc, 0xfc, 0xfc), QColor(0x2a, 0x2e, 0x32));
  dark.setColor(QPalette::WindowText, QColor(0xfc, 0xfc, 0xfc));
  for (const QPalette& palette : {light, dark}) {
    for (const QRgb panel : {0xff000000, 0xff202226, 0xff3c3c3c, 0xffd0d0d0, 0xffffffff}) {
      for (const int side : {16, 22, 24, 48}) {
        EXPECT_GE(contrastOn(panel, picture(kRight, true, palette, side)), 3)
            << panel << " " << side;
        EXPECT_GE(contrastOn(panel, picture(kRight, false, palette, side)), 4.5);
      }
    }
  }
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
