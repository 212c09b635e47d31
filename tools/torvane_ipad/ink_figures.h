#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "ports/geometry.h"

namespace torvane::ipad {

// The figures' names, for a sentence.
inline constexpr std::string_view kFigureNames = "circle, line, spiral, star or wave";

[[nodiscard]] bool isFigure(std::string_view name);

// Where the pen is after a part (0 to 1) of a figure, in fractions of a slide of 16:9; the centre
// where there is no figure of that name.
[[nodiscard]] Point figurePoint(std::string_view name, double part);

// The whole figure in `count` points, two at least.
[[nodiscard]] std::vector<Point> figureStroke(std::string_view name, std::size_t count);

}  // namespace torvane::ipad
