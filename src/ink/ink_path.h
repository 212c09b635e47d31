#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "ports/canvas.h"
#include "ports/geometry.h"

namespace torvane {

// A stroke is drawn in runs of this many segments, so that no stroke can hold the program up. Two
// runs share a point; only there, and only in antialiased edge pixels, it shows.
inline constexpr std::size_t kRunLength = 2000;

[[nodiscard]] std::size_t runCount(std::size_t pointCount);

// Fractions of the slide beyond this are off every screen.
inline constexpr double kFarAway = 1e6;

// Where a fraction of the slide lies in the view. What is far away is moved to where that begins,
// each coordinate for itself, so that products of them stay numbers: good for boxes and single
// points. Lines go through nearPart() first.
class SlideMapping {
 public:
  explicit SlideMapping(const Rect& slide) : slide_(slide) {}

  [[nodiscard]] Point map(const Point& fraction) const;
  [[nodiscard]] double penWidth() const { return std::max(slide_.width * 0.005, 3.0); }
  [[nodiscard]] double laserRadius() const { return std::max(slide_.width * 0.011, 8.0); }

 private:
  Rect slide_;
};

struct Segment {
  Point from, to;
};

// The part of a line, in fractions, that is not far away, with the direction that the whole has
// whatever its length; none when all of it is. Coordinates are numbers.
[[nodiscard]] std::optional<Segment> nearPart(const Segment& fractions);

// How far beyond its line a pen may touch a pixel.
[[nodiscard]] inline double penReach(double penWidth) {
  return penWidth / 2 + 2;
}

// Sets `lines` to the segments of one run of a stroke that can touch `area`, and returns their
// length. Segments that leave `view` are cut a little outside it; those with a coordinate that is
// no number are left out.
double collectRun(std::span<const Point> stroke, std::size_t run, const SlideMapping& mapping,
                  const Rect& view, const Rect& area, Lines& lines);

}  // namespace torvane
