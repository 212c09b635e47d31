#pragma once

namespace torvane {

struct Point {
  double x = 0;
  double y = 0;

  bool operator==(const Point&) const = default;
};

// Origin, then size. Whether y grows upwards or downwards, the place that uses it says.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const Rect&) const = default;
};

}  // namespace torvane
