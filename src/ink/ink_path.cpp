#include "ink/ink_path.h"

#include <optional>

namespace torvane {
namespace {

constexpr double kFarAway = 1e6;

bool isNumber(const Point& p) {
  return std::isfinite(p.x) && std::isfinite(p.y);
}

bool touches(const Rect& area, const Point& a, const Point& b) {
  return std::min(a.x, b.x) <= area.right() && std::max(a.x, b.x) >= area.x &&
         std::min(a.y, b.y) <= area.bottom() && std::max(a.y, b.y) >= area.y;
}

bool isInside(const Rect& area, const Point& p) {
  return p.x >= area.x && p.x <= area.right() && p.y >= area.y && p.y <= area.bottom();
}

struct Segment {
  Point from, to;
};

// Narrows [enter, leave] to the part of a line where start + t × step ≤ limit.
void narrow(double start, double step, double limit, double& enter, double& leave) {
  const double room = limit - start;
  if (step > 0) leave = std::min(leave, room / step);
  if (step < 0) enter = std::max(enter, room / step);
  if (step == 0 && room < 0) leave = -1;
}

std::optional<Segment> cutTo(const Rect& area, const Segment& s) {
  const double dx = s.to.x - s.from.x, dy = s.to.y - s.from.y;
  double enter = 0, leave = 1;
  narrow(s.from.x, dx, area.right(), enter, leave);
  narrow(-s.from.x, -dx, -area.x, enter, leave);
  narrow(s.from.y, dy, area.bottom(), enter, leave);
  narrow(-s.from.y, -dy, -area.y, enter, leave);
  if (enter > leave) return std::nullopt;
  const auto at = [&](double t) { return Point{s.from.x + t * dx, s.from.y + t * dy}; };
  return Segment{enter > 0 ? at(enter) : s.from, leave < 1 ? at(leave) : s.to};
}

// Joins segments to lines where one begins at the end of the other.
class LineBuilder {
 public:
  explicit LineBuilder(Lines& lines) : lines_(lines) {
    lines_.points.clear();
    lines_.starts.clear();
  }

  void add(const Segment& segment, bool continues) {
    if (!continues) {
      lines_.starts.push_back(lines_.points.size());
      lines_.points.push_back(segment.from);
    }
    lines_.points.push_back(segment.to);
    length_ += std::hypot(segment.to.x - segment.from.x, segment.to.y - segment.from.y);
  }

  [[nodiscard]] double length() const { return length_; }

 private:
  Lines& lines_;
  double length_ = 0;
};

}  // namespace

std::size_t runCount(std::size_t pointCount) {
  return pointCount < 2 ? 0 : (pointCount - 2) / kRunLength + 1;
}

Point SlideMapping::map(const Point& fraction) const {
  const auto near = [](double v) {
    return std::isfinite(v) ? std::clamp(v, -kFarAway, kFarAway) : std::nan("");
  };
  return {slide_.x + near(fraction.x) * slide_.width, slide_.y + near(fraction.y) * slide_.height};
}

double collectRun(std::span<const Point> stroke, std::size_t run, const SlideMapping& mapping,
                  const Rect& view, const Rect& area, Lines& lines) {
  const double reach = penReach(mapping.penWidth());
  const Rect touching = outset(area, reach);
  const Rect limits = outset(view, 2 * reach);
  LineBuilder builder(lines);
  const std::size_t first = run * kRunLength;
  const std::size_t last = std::min(first + kRunLength, stroke.size() - 1);
  Point from = mapping.map(stroke[first]);
  bool continues = false;
  for (std::size_t i = first + 1; i <= last; ++i) {
    const Point to = mapping.map(stroke[i]);
    const bool drawn = isNumber(from) && isNumber(to) && touches(touching, from, to);
    const auto seen = drawn ? cutTo(limits, {from, to}) : std::nullopt;
    if (seen) builder.add(*seen, continues && seen->from == from);
    continues = seen && isInside(limits, to);
    from = to;
  }
  return builder.length();
}

}  // namespace torvane
