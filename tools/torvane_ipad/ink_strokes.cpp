#include "torvane_ipad/ink_strokes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace torvane::ipad {
namespace {

constexpr std::string_view kBlanks = " \t\r,";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes a number off the front.
std::optional<double> takeNumber(std::string_view& text) {
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || !std::isfinite(value)) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  return value;
}

std::optional<Point> readPoint(std::string_view line) {
  const auto x = takeNumber(line);
  if (!x || line.empty() || kBlanks.find(line.front()) == kBlanks.npos) return std::nullopt;
  line = trimmed(line);
  const auto y = takeNumber(line);
  if (!y || !line.empty()) return std::nullopt;
  return Point{*x, *y};
}

}  // namespace

StrokeFile parseStrokes(std::string_view text) {
  StrokeFile file;
  bool isDrawing = false;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::string_view whole = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(whole.size() + 1, text.size()));
    const std::string_view line = trimmed(whole.substr(0, whole.find('#')));
    if (line.empty()) {
      if (whole.find('#') == whole.npos) isDrawing = false;
      continue;
    }
    const auto point = readPoint(line);
    if (!point) return {{}, number};
    if (!std::exchange(isDrawing, true)) file.strokes.emplace_back();
    file.strokes.back().push_back(*point);
  }
  return file;
}

JsonArray strokeEvents(const Strokes& strokes, std::int64_t firstId) {
  JsonArray events;
  std::int64_t id = firstId;
  for (const auto& stroke : strokes) {
    const char* kind = "begin";
    for (const Point& point : stroke) {
      events.push_back(
          {{"t", std::exchange(kind, "pt")}, {"id", id}, {"x", point.x}, {"y", point.y}});
    }
    ++id;
  }
  return events;
}

std::vector<JsonArray> sharedOut(const JsonArray& events, std::size_t parts, std::size_t most) {
  const std::size_t count = events.size();
  const std::size_t needed = (count + most - 1) / most;
  parts = std::clamp(parts, needed, std::max(needed, count));
  std::vector<JsonArray> shared;
  for (std::size_t part = 0; part < parts; ++part) {
    shared.emplace_back(events.begin() + count * part / parts,
                        events.begin() + count * (part + 1) / parts);
  }
  return shared;
}

}  // namespace torvane::ipad
