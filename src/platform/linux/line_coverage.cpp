#include "platform/linux/line_coverage.h"

#include <algorithm>
#include <cmath>

namespace torvane {
namespace {

// Pixels are covered this many at a time, whole vectors, from multiples of it.
constexpr int kBlock = 4;

// A line with what its distances need.
struct Line {
  double x, y, dx, dy;
  double perRow;           // of its length; 0 for a level line
  int baseX, baseY;        // the pixel where it begins
  float insideX, insideY;  // its beginning from that pixel's centre
  float stepX, stepY;      // along the line per pixel, as fractions of its length
};

Line makeLine(double fromX, double fromY, double toX, double toY) {
  const double dx = toX - fromX, dy = toY - fromY;
  const double lengthSquared = dx * dx + dy * dy;
  const double scale = lengthSquared > 0 ? 1 / lengthSquared : 0;
  const double baseX = std::floor(fromX), baseY = std::floor(fromY);
  return {fromX,
          fromY,
          dx,
          dy,
          dy != 0 ? 1 / dy : 0,
          static_cast<int>(baseX),
          static_cast<int>(baseY),
          static_cast<float>(fromX - baseX - 0.5),
          static_cast<float>(fromY - baseY - 0.5),
          static_cast<float>(dx * scale),
          static_cast<float>(dy * scale)};
}

// The pixels of a row are independent of each other: the compiler does several at a time. Column
// and row count from the line's first pixel; sums of whole numbers are exact, so that a pixel's
// value is the same wherever an area begins.
void coverRow(float* values, int blocks, int column, int row, const Line& line, float edge) {
  const auto dx = static_cast<float>(line.dx), dy = static_cast<float>(line.dy);
  const float y = static_cast<float>(row) - line.insideY;
  const float alongY = y * line.stepY;
  const int count = blocks * kBlock;
  for (int i = 0; i < count; ++i) {
    const float x = static_cast<float>(column + i) - line.insideX;
    float t = x * line.stepX + alongY;
    t = t < 0.0F ? 0.0F : t;
    t = t > 1.0F ? 1.0F : t;
    const float awayX = x - t * dx, awayY = y - t * dy;
    float covered = edge - std::sqrt(awayX * awayX + awayY * awayY);
    covered = covered > 1.0F ? 1.0F : covered;
    values[i] = covered > values[i] ? covered : values[i];
  }
}

// Where the line comes within `reach` of this row, from left to right.
std::pair<double, double> columns(const Line& line, double rowCentre, double reach) {
  double enter = 0, leave = 1;
  if (line.dy != 0) {
    const double a = (rowCentre - reach - line.y) * line.perRow;
    const double b = (rowCentre + reach - line.y) * line.perRow;
    enter = std::clamp(std::min(a, b), 0.0, 1.0);
    leave = std::clamp(std::max(a, b), 0.0, 1.0);
  }
  const double a = line.x + enter * line.dx, b = line.x + leave * line.dx;
  return {std::min(a, b) - reach, std::max(a, b) + reach};
}

int clampedTo(double v, int most) {
  return static_cast<int>(std::clamp(v, 0.0, static_cast<double>(most)));
}

}  // namespace

LineCoverage::LineCoverage(int left, int top, int width, int height)
    : left_(left),
      top_(top),
      width_(width),
      stride_(static_cast<std::size_t>((width + kBlock - 1) / kBlock * kBlock)),
      rows_(static_cast<std::size_t>(height)),
      values_(stride_ * rows_.size()) {}

std::pair<int, int> LineCoverage::touchedRows(double fromY, double toY, double reach) const {
  const int most = static_cast<int>(rows_.size());
  return {clampedTo(std::floor(std::min(fromY, toY) - reach) - top_, most),
          clampedTo(std::ceil(std::max(fromY, toY) + reach) - top_, most)};
}

void LineCoverage::addLine(double fromX, double fromY, double toX, double toY, double penWidth) {
  const Line line = makeLine(fromX, fromY, toX, toY);
  const double reach = penWidth / 2 + 0.5;
  const auto [firstRow, endRow] = touchedRows(fromY, toY, reach);
  for (int y = firstRow; y < endRow; ++y) {
    const auto [leftmost, rightmost] = columns(line, top_ + y + 0.5, reach);
    const int from = clampedTo(leftmost - left_, width_) / kBlock * kBlock;
    const int blocks = (clampedTo(rightmost - left_ + 1, width_) - from + kBlock - 1) / kBlock;
    if (blocks <= 0) continue;
    coverRow(row(y) + from, blocks, left_ + from - line.baseX, top_ + y - line.baseY, line,
             static_cast<float>(reach));
    const int to = std::min(from + blocks * kBlock, width_);
    Row& touched = rows_[static_cast<std::size_t>(y)];
    touched = touched.from < touched.to
                  ? Row{std::min(touched.from, from), std::max(touched.to, to)}
                  : Row{from, to};
  }
}

}  // namespace torvane
