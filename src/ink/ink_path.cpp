#include "ink/ink_path.h"

namespace torvane {
namespace {

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

bool isNear(const Point& fraction) {
  return std::abs(fraction.x) <= kFarAway && std::abs(fraction.y) <= kFarAway;
}

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

// a × d - b × c, correct to its last digits also where the products nearly cancel each other out.
double crossProduct(double a, double b, double c, double d) {
  const double subtracted = b * c;
  return std::fma(a, d, -subtracted) - std::fma(b, c, -subtracted);
}

// The endless line through two points, as x × dy - y × dx = cross. A line of 1e300 slides passes
// through the right pixels only when these are looked for on the line itself: a way from one of its
// ends would be lost in rounding.
class EndlessLine {
 public:
  explicit EndlessLine(const Segment& s)
      : dx_(s.to.x - s.from.x),
        dy_(s.to.y - s.from.y),
        cross_(crossProduct(s.from.x, s.from.y, s.to.x, s.to.y)) {}

  // Where one comes who goes along the line from `end` until no coordinate is beyond the limit;
  // outside of it where the line passes by.
  [[nodiscard]] Point movedWithin(double limit, Point end) const {
    if (std::abs(end.x) > limit) {
      end.x = std::copysign(limit, end.x);
      end.y = (end.x * dy_ - cross_) / dx_;
    }
    if (std::abs(end.y) > limit) {
      end.y = std::copysign(limit, end.y);
      end.x = (end.y * dx_ + cross_) / dy_;
    }
    return end;
  }

 private:
  double dx_, dy_, cross_;
};

bool areBeyond(double limit, double a, double b) {
  return (a > limit && b > limit) || (a < -limit && b < -limit);
}

Point scaled(const Point& p, double by) {
  return {p.x * by, p.y * by};
}

// A line in the view, given its ends as fractions and as they were mapped each for itself.
std::optional<Segment> inView(const SlideMapping& mapping, const Segment& fractions,
                              const Segment& mapped) {
  if (isNear(fractions.from) && isNear(fractions.to)) return mapped;
  const auto part = nearPart(fractions);
  if (!part) return std::nullopt;
  return Segment{mapping.map(part->from), mapping.map(part->to)};
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

std::optional<Segment> nearPart(const Segment& fractions) {
  const auto& [from, to] = fractions;
  if (isNear(from) && isNear(to)) return fractions;
  if (areBeyond(kFarAway, from.x, to.x) || areBeyond(kFarAway, from.y, to.y)) return std::nullopt;
  // Down to where products are numbers, by a power of two, which changes no digit.
  const double largest =
      std::max({std::abs(from.x), std::abs(from.y), std::abs(to.x), std::abs(to.y)});
  const double scale = std::ldexp(1, -std::ilogb(largest));
  const double limit = kFarAway * scale;
  const Segment line{scaled(from, scale), scaled(to, scale)};
  const EndlessLine endless(line);
  const Segment part{endless.movedWithin(limit, line.from), endless.movedWithin(limit, line.to)};
  const double rounded = limit * (1 + 1e-9);
  if (std::abs(part.from.x) > rounded || std::abs(part.to.x) > rounded) return std::nullopt;
  return Segment{scaled(part.from, 1 / scale), scaled(part.to, 1 / scale)};
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
    const auto line =
        drawn ? inView(mapping, {stroke[i - 1], stroke[i]}, {from, to}) : std::nullopt;
    const auto seen = line ? cutTo(limits, *line) : std::nullopt;
    if (seen) builder.add(*seen, continues && seen->from == from);
    continues = seen && isInside(limits, to);
    from = to;
  }
  return builder.length();
}

}  // namespace torvane
