#include "platform/linux/pixel_rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace torvane {
namespace {

constexpr int kCount = 37;  // no multiple of a vector
constexpr float kFar = 1e30F;

std::vector<float> squaresFrom(const PixelLine& line, int column, int count) {
  std::vector<float> squares(static_cast<std::size_t>(count), kFar);
  keepNearer(squares.data(), count, column, 3, line);
  return squares;
}

TEST(PixelRows, GiveAPixelTheSameValueAloneAsInARow) {
  std::mt19937 random(3);
  std::uniform_real_distribution<float> part(-0.5F, 0.5F), far(-40, 40);
  for (int i = 0; i < 200; ++i) {
    const float dx = far(random), dy = far(random), length = dx * dx + dy * dy;
    const PixelLine line{part(random), part(random), dx, dy, dx / length, dy / length};
    auto row = squaresFrom(line, -kCount / 2, kCount);
    auto coverage = row;
    squaresToCoverage(coverage.data(), kCount, 12.3F);
    for (int x = 0; x < kCount; ++x) {
      auto alone = squaresFrom(line, x - kCount / 2, 1);
      ASSERT_EQ(alone[0], row[static_cast<std::size_t>(x)]);
      squaresToCoverage(alone.data(), 1, 12.3F);
      ASSERT_EQ(alone[0], coverage[static_cast<std::size_t>(x)]);
    }
  }
}

TEST(PixelRows, MeasureTheDistanceFromTheLineAndItsEnds) {
  const PixelLine line{0, 3, 10, 0, 0.1F, 0};
  const auto squares = squaresFrom(line, -4, 20);
  EXPECT_FLOAT_EQ(squares[0], 16);  // four pixels left of its beginning
  EXPECT_FLOAT_EQ(squares[4 + 5], 0);
  EXPECT_FLOAT_EQ(squares[4 + 12], 4);
}

TEST(PixelRows, KeepWhatIsNearerAlready) {
  std::vector<float> squares = {0.25F, 100};
  keepNearer(squares.data(), 2, 0, 0, {0, 2, 0, 0, 0, 0});
  EXPECT_FLOAT_EQ(squares[0], 0.25F);
  EXPECT_FLOAT_EQ(squares[1], 5);
}

TEST(PixelRows, CoverInFullUpToOnePixelFromTheEdge) {
  std::vector<float> squares = {0, 16, 20.25F, 25, kFar};
  squaresToCoverage(squares.data(), 5, 5);
  EXPECT_EQ(squares, (std::vector<float>{1, 1, 0.5F, 0, 0}));
}

// One channel of the colour, and one of what is below, at the same alpha and rounded each.
std::uint32_t blended(std::uint32_t colour, std::uint32_t below, int alpha) {
  const auto share = [](double value, int part) { return std::lround(value * part / 255); };
  return static_cast<std::uint32_t>(share(colour, alpha) + share(below, 255 - alpha));
}

TEST(PixelRows, BlendEveryAlphaToTheNearestValue) {
  constexpr std::uint32_t kColour = 0xffff3b30, kBelow = 0x80402001;
  std::vector<float> coverage;
  for (int alpha = 0; alpha < 256; ++alpha) coverage.push_back(static_cast<float>(alpha) / 255);
  std::vector<std::uint32_t> pixels(coverage.size(), kBelow);
  blend(pixels.data(), coverage.data(), 256, kColour);
  EXPECT_EQ(pixels.front(), kBelow);
  EXPECT_EQ(pixels.back(), kColour);
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int shift = 0; shift < 32; shift += 8) {
      const auto channel = [&](std::uint32_t pixel) { return (pixel >> shift) & 0xff; };
      ASSERT_EQ(channel(pixels[static_cast<std::size_t>(alpha)]),
                blended(channel(kColour), channel(kBelow), alpha));
    }
  }
}

}  // namespace
}  // namespace torvane
