#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "platform/linux/pixel_rows.h"

namespace torvane {

// How much of each pixel one path of round-capped lines covers: the lines' distance to the pixel's
// centre decides, and of several lines the nearest. So a pixel's value depends on nothing but the
// lines near it, and a part of a drawing that is painted anew meets its surroundings exactly.
// Coordinates are pixels; the area is given once, the pen before the first line of a path.
class LineCoverage {
 public:
  LineCoverage(int left, int top, int width, int height);

  void setPenWidth(double width) { reach_ = width / 2 + 0.5; }
  void addLine(double fromX, double fromY, double toX, double toY);

  // Calls visit(x, y, coverage, count) for each row that was touched, from the top: coverage is 0
  // to 1 for `count` pixels from (x, y) rightwards. Then all is empty again.
  template <typename Visit>
  void take(Visit visit);

 private:
  static constexpr float kFarAway = std::numeric_limits<float>::max();

  struct Row {
    int from = std::numeric_limits<int>::max(), to = 0;  // touched; none when from ≥ to
    void include(int first, int end) {
      from = std::min(from, first);
      to = std::max(to, end);
    }
  };

  std::pair<int, int> touchedRows(double fromY, double toY) const;
  std::pair<int, int> touchedColumns(double leftmost, double rightmost) const;
  float* row(int y) { return squares_.data() + static_cast<std::size_t>(y) * stride_; }

  int left_, top_;
  int width_;
  double reach_ = 0;    // from a line to where it covers nothing any more
  std::size_t stride_;  // of a row in squares_
  std::vector<Row> rows_;
  std::vector<float> squares_;  // of the distance to the nearest line
};

template <typename Visit>
void LineCoverage::take(Visit visit) {
  for (int y = 0; y < static_cast<int>(rows_.size()); ++y) {
    Row& touched = rows_[static_cast<std::size_t>(y)];
    if (touched.from >= touched.to) continue;
    float* values = row(y) + touched.from;
    const int count = touched.to - touched.from;
    squaresToCoverage(values, count, static_cast<float>(reach_));
    visit(left_ + touched.from, top_ + y, static_cast<const float*>(values), count);
    std::fill_n(values, count, kFarAway);
    touched = {};
  }
}

}  // namespace torvane
