#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "ports/geometry.h"

namespace torvane {

// A stroke as a hand draws it: it wanders. `step` is the distance of its points, in slide widths.
inline std::vector<Point> wanderingStroke(std::mt19937& random, std::size_t count, double step) {
  std::uniform_real_distribution<double> anywhere(0, 1), turn(-0.3, 0.3);
  Point at{anywhere(random), anywhere(random)};
  double direction = 6.28 * anywhere(random);
  std::vector<Point> points;
  for (std::size_t i = 0; i < count; ++i) {
    points.push_back(at);
    direction += turn(random);
    at = {at.x + step * std::cos(direction), at.y + step * std::sin(direction) * 16 / 9};
  }
  return points;
}

}  // namespace torvane
