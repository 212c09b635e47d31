#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace torvane {

struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

// The ink laid over the slide show. Positions are fractions of the slide, (0, 0) its top left and
// (1, 1) its bottom right corner; values outside are kept as they are. Main thread only.
class OverlayView {
 public:
  std::map<std::int64_t, std::vector<Point>> strokes;  // by stroke id
  std::vector<std::int64_t> order;                     // drawing order; an id may be there twice
  std::optional<Point> laser;
  double laserAt = 0;      // media clock, seconds: when the dot was placed
  double aspect = 0.5625;  // slide height / slide width
};

}  // namespace torvane
