#include "torvane_ipad/ink_figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace torvane::ipad {
namespace {

constexpr double kAspect = 0.5625;
constexpr double kRadius = 0.35;  // of the slide's height

// From the slide's centre, clockwise from the top; `radius` in heights.
Point around(double turns, double radius) {
  const double angle = 2 * std::numbers::pi * turns;
  return {0.5 + radius * kAspect * std::sin(angle), 0.5 - radius * std::cos(angle)};
}

Point circle(double part) {
  return around(part, kRadius);
}

Point line(double part) {
  return {0.15 + 0.7 * part, 0.75 - 0.5 * part};
}

Point spiral(double part) {
  return around(3 * part, kRadius * part);
}

// Five straight lines, each to the tip after the next.
Point star(double part) {
  const double tip = std::min(std::floor(5 * part), 4.0);
  const Point from = around(tip * 2 / 5, kRadius);
  const Point to = around((tip + 1) * 2 / 5, kRadius);
  const double way = 5 * part - tip;
  return {from.x + (to.x - from.x) * way, from.y + (to.y - from.y) * way};
}

Point wave(double part) {
  return {0.15 + 0.7 * part, 0.5 - 0.2 * std::sin(4 * std::numbers::pi * part)};
}

struct Figure {
  std::string_view name;
  Point (*at)(double part);
};

constexpr std::array kFigures = {Figure{"circle", circle}, Figure{"line", line},
                                 Figure{"spiral", spiral}, Figure{"star", star},
                                 Figure{"wave", wave}};

const Figure* findFigure(std::string_view name) {
  const auto* found = std::ranges::find(kFigures, name, &Figure::name);
  return found != kFigures.end() ? found : nullptr;
}

}  // namespace

bool isFigure(std::string_view name) {
  return findFigure(name) != nullptr;
}

Point figurePoint(std::string_view name, double part) {
  const Figure* figure = findFigure(name);
  return figure != nullptr ? figure->at(std::clamp(part, 0.0, 1.0)) : Point{0.5, 0.5};
}

std::vector<Point> figureStroke(std::string_view name, std::size_t count) {
  const std::size_t last = std::max<std::size_t>(count, 2) - 1;
  std::vector<Point> stroke;
  stroke.reserve(last + 1);
  for (std::size_t i = 0; i <= last; ++i) {
    stroke.push_back(figurePoint(name, static_cast<double>(i) / static_cast<double>(last)));
  }
  return stroke;
}

}  // namespace torvane::ipad
