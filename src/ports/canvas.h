#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "ports/geometry.h"

namespace torvane {

// A decoded picture, of the adapter's own kind. Never changes; any thread.
class Picture {
 public:
  virtual ~Picture() = default;
};

// Connected lines: each runs from its entry in `starts` (an index into `points`) to the next
// line's start, and has two points or more.
struct Lines {
  std::vector<Point> points;
  std::vector<std::size_t> starts;
};

// Something to draw on, in points, with the origin at the top left and y growing downwards. What
// lies outside its area is cut off. Everything is antialiased and composited source-over in the
// system's red, pictures in their own colours. What a call does to a pixel does not depend on
// where the canvas's area ends. Main thread only.
class Canvas {
 public:
  virtual ~Canvas() = default;

  [[nodiscard]] virtual double pixelsPerPoint() const = 0;

  // Stretches the whole picture into `into`.
  virtual void drawPicture(const Picture& picture, const Rect& into) = 0;

  // All lines as one path: where they overlap, they are no denser. Round caps and joins.
  virtual void strokeLines(const Lines& lines, double width) = 0;

  virtual void fillOval(const Rect& bounds, double opacity) = 0;

  // An empty (transparent) canvas off the screen for this part of the same coordinates, widened
  // to whole pixels.
  [[nodiscard]] virtual std::unique_ptr<Canvas> makeLayer(const Rect& area) const = 0;

  // Replaces this part, widened to whole pixels, by the pixels that `layer` has there. The layer
  // was made by this canvas or by one with the same pixels.
  virtual void copyLayer(const Canvas& layer, const Rect& area) = 0;
};

}  // namespace torvane
