#pragma once

#include <memory>
#include <span>

#include "ink/geometry.h"

namespace torvane {

// A decoded picture, of the adapter's own kind. Never changes; any thread.
class Picture {
 public:
  virtual ~Picture() = default;
};

// Something to draw on, in points, with the origin at the top left and y growing downwards.
// Everything is antialiased and composited source-over in the system's red at the opacity given.
// Coordinates may lie far outside and are clipped by whoever calls.
class Canvas {
 public:
  virtual ~Canvas() = default;

  // Stretches the whole picture into `into`.
  virtual void drawPicture(const Picture& picture, const Rect& into) = 0;

  // One line through all points, round caps and joins. Less than two points draw nothing.
  virtual void strokeLine(std::span<const Point> points, double width) = 0;

  virtual void fillOval(const Rect& bounds, double opacity) = 0;
};

}  // namespace torvane
