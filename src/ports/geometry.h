#pragma once

#include <algorithm>
#include <cmath>

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

  [[nodiscard]] double right() const { return x + width; }
  [[nodiscard]] double bottom() const { return y + height; }
  [[nodiscard]] double area() const { return width * height; }
  [[nodiscard]] bool isEmpty() const { return !(width > 0 && height > 0); }
  [[nodiscard]] bool isFinite() const {
    return std::isfinite(x) && std::isfinite(y) && std::isfinite(width) && std::isfinite(height);
  }
};

[[nodiscard]] inline Rect rectBetween(double left, double top, double right, double bottom) {
  return {left, top, right - left, bottom - top};
}

// The same rectangle with a size that is not negative.
[[nodiscard]] inline Rect standardized(const Rect& r) {
  return {std::min(r.x, r.right()), std::min(r.y, r.bottom()), std::abs(r.width),
          std::abs(r.height)};
}

[[nodiscard]] inline Rect outset(const Rect& r, double by) {
  return {r.x - by, r.y - by, r.width + 2 * by, r.height + 2 * by};
}

// The smallest rectangle with whole coordinates around `r`.
[[nodiscard]] inline Rect widenedToWhole(const Rect& r) {
  return rectBetween(std::floor(r.x), std::floor(r.y), std::ceil(r.right()), std::ceil(r.bottom()));
}

[[nodiscard]] inline Rect intersected(const Rect& a, const Rect& b) {
  const Rect both = rectBetween(std::max(a.x, b.x), std::max(a.y, b.y),
                                std::min(a.right(), b.right()), std::min(a.bottom(), b.bottom()));
  return both.isEmpty() ? Rect{} : both;
}

[[nodiscard]] inline Rect united(const Rect& a, const Rect& b) {
  if (a.isEmpty()) return b;
  if (b.isEmpty()) return a;
  return rectBetween(std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.right(), b.right()),
                     std::max(a.bottom(), b.bottom()));
}

[[nodiscard]] inline bool contains(const Rect& outer, const Rect& inner) {
  return outer.x <= inner.x && outer.y <= inner.y && inner.right() <= outer.right() &&
         inner.bottom() <= outer.bottom();
}

}  // namespace torvane
