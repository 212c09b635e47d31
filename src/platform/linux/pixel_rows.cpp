#include "platform/linux/pixel_rows.h"

#include <cmath>

// Compiled twice: for every x86-64 processor, and for those with wide vectors, which are found out
// when the program starts.
#if defined(__x86_64__)
#define TORVANE_ALSO_WIDE [[gnu::target_clones("avx2", "default")]]
#else
#define TORVANE_ALSO_WIDE
#endif

namespace torvane {
namespace {

// Two of a pixel's four channels at a time, each scaled by alpha / 255 and rounded.
std::uint32_t scaled(std::uint32_t pixel, std::uint32_t alpha) {
  constexpr std::uint32_t kPair = 0x00ff00ff, kHalf = 0x00800080;
  std::uint32_t low = (pixel & kPair) * alpha + kHalf;
  low = ((low + ((low >> 8) & kPair)) >> 8) & kPair;
  std::uint32_t high = ((pixel >> 8) & kPair) * alpha + kHalf;
  high = (high + ((high >> 8) & kPair)) & ~kPair;
  return low | high;
}

}  // namespace

TORVANE_ALSO_WIDE void keepNearer(float* squares, int count, int column, int row,
                                  const PixelLine& line) {
  const float y = static_cast<float>(row) - line.y;
  const float alongY = y * line.stepY;
  for (int i = 0; i < count; ++i) {
    const float x = static_cast<float>(column + i) - line.x;
    float t = x * line.stepX + alongY;
    t = t < 0.0F ? 0.0F : t;
    t = t > 1.0F ? 1.0F : t;
    const float awayX = x - t * line.dx, awayY = y - t * line.dy;
    const float square = awayX * awayX + awayY * awayY;
    squares[i] = square < squares[i] ? square : squares[i];
  }
}

TORVANE_ALSO_WIDE void squaresToCoverage(float* squares, int count, float reach) {
  for (int i = 0; i < count; ++i) {
    float covered = reach - std::sqrt(squares[i]);
    covered = covered < 0.0F ? 0.0F : covered;
    squares[i] = covered > 1.0F ? 1.0F : covered;
  }
}

TORVANE_ALSO_WIDE void blend(std::uint32_t* pixels, const float* coverage, int count,
                             std::uint32_t colour) {
  for (int i = 0; i < count; ++i) {
    const int rounded = static_cast<int>(coverage[i] * 255 + 0.5F);
    const auto alpha = static_cast<std::uint32_t>(rounded);
    pixels[i] = scaled(colour, alpha) + scaled(pixels[i], 255 - alpha);
  }
}

}  // namespace torvane
