#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace torvane {

// How much of each pixel one path of round-capped lines covers: the lines' distance to the pixel's
// centre decides, and of several lines the nearest. So a pixel's value depends on nothing but the
// lines near it, and a part of a drawing that is painted anew meets its surroundings exactly.
// Coordinates are pixels; the area is given once.
class LineCoverage {
 public:
  LineCoverage(int left, int top, int width, int height);

  void addLine(double fromX, double fromY, double toX, double toY, double penWidth);

  // Calls visit(x, y, coverage, count) for each row that was touched, from the top: coverage is 0
  // to 1 for `count` pixels from (x, y) rightwards. Then all is empty again.
  template <typename Visit>
  void take(Visit visit);

 private:
  struct Row {
    int from = 0, to = 0;  // touched, relative to the area; none when from ≥ to
  };

  std::pair<int, int> touchedRows(double fromY, double toY, double reach) const;
  float* row(int y) { return values_.data() + static_cast<std::size_t>(y) * stride_; }

  int left_, top_;
  int width_;
  std::size_t stride_;  // of a row in values_
  std::vector<Row> rows_;
  std::vector<float> values_;
};

template <typename Visit>
void LineCoverage::take(Visit visit) {
  for (int y = 0; y < static_cast<int>(rows_.size()); ++y) {
    Row& touched = rows_[static_cast<std::size_t>(y)];
    if (touched.from >= touched.to) continue;
    float* values = row(y) + touched.from;
    const int count = touched.to - touched.from;
    visit(left_ + touched.from, top_ + y, static_cast<const float*>(values), count);
    std::fill_n(values, count, 0.0F);
    touched = {};
  }
}

}  // namespace torvane
