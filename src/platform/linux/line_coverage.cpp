#include "platform/linux/line_coverage.h"

#include <algorithm>
#include <cmath>

namespace torvane {
namespace {

// Pixels are looked at this many at a time, whole vectors, from multiples of it, and this many
// rows from the same column to the same column.
constexpr int kBlock = 8;
constexpr int kBand = 8;

// A line as rows see it, and as their pixels do, for which it begins near the centre of the pixel
// where it begins. Column and row count from that pixel; sums of whole numbers are exact, so that
// a pixel's value is the same wherever an area begins.
struct Line {
  double x, y, dx, dy;
  double perRow;  // of its length; 0 for a level line
  int baseX, baseY;
  PixelLine fromBase;
};

Line makeLine(double fromX, double fromY, double toX, double toY) {
  const double dx = toX - fromX, dy = toY - fromY;
  const double lengthSquared = dx * dx + dy * dy;
  const double scale = lengthSquared > 0 ? 1 / lengthSquared : 0;
  const double baseX = std::floor(fromX), baseY = std::floor(fromY);
  const auto narrow = [](double value) { return static_cast<float>(value); };
  return {fromX,
          fromY,
          dx,
          dy,
          dy != 0 ? 1 / dy : 0,
          static_cast<int>(baseX),
          static_cast<int>(baseY),
          {narrow(fromX - baseX - 0.5), narrow(fromY - baseY - 0.5), narrow(dx), narrow(dy),
           narrow(dx * scale), narrow(dy * scale)}};
}

// Where the line comes within `reach` of the rows' centres from `top` to `bottom`, from left to
// right.
std::pair<double, double> columns(const Line& line, double top, double bottom, double reach) {
  double enter = 0, leave = 1;
  if (line.dy != 0) {
    const double a = (top - reach - line.y) * line.perRow;
    const double b = (bottom + reach - line.y) * line.perRow;
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
      squares_(stride_ * rows_.size(), kFarAway) {}

std::pair<int, int> LineCoverage::touchedRows(double fromY, double toY) const {
  const int most = static_cast<int>(rows_.size());
  return {clampedTo(std::floor(std::min(fromY, toY) - reach_) - top_, most),
          clampedTo(std::ceil(std::max(fromY, toY) + reach_) - top_, most)};
}

// Of whole blocks.
std::pair<int, int> LineCoverage::touchedColumns(double leftmost, double rightmost) const {
  const int from = clampedTo(leftmost - left_, width_) / kBlock * kBlock;
  const int to = clampedTo(rightmost - left_ + 1, width_);
  return {from, (to + kBlock - 1) / kBlock * kBlock};
}

void LineCoverage::addLine(double fromX, double fromY, double toX, double toY) {
  const Line line = makeLine(fromX, fromY, toX, toY);
  const auto [firstRow, endRow] = touchedRows(fromY, toY);
  for (int top = firstRow; top < endRow; top += kBand) {
    const int bottom = std::min(top + kBand, endRow);
    const auto [leftmost, rightmost] = columns(line, top_ + top + 0.5, top_ + bottom - 0.5, reach_);
    const auto [from, to] = touchedColumns(leftmost, rightmost);
    for (int y = top; y < bottom && from < to; ++y) {
      keepNearer(row(y) + from, to - from, left_ + from - line.baseX, top_ + y - line.baseY,
                 line.fromBase);
      rows_[static_cast<std::size_t>(y)].include(from, std::min(to, width_));
    }
  }
}

}  // namespace torvane
