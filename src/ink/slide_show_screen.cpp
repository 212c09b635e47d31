#include "ink/slide_show_screen.h"

#include <algorithm>
#include <cmath>

namespace torvane {
namespace {

constexpr const char* kSlideShowOwner = "Microsoft PowerPoint";
constexpr double kTolerance = 4;  // points

double valueOf(const std::map<std::string, double>& bounds, const char* key) {
  const auto found = bounds.find(key);
  return found != bounds.end() ? found->second : 0;
}

// From y growing downwards to y growing upwards, as screens have it.
Rect turned(const std::map<std::string, double>& bounds, double primaryHeight) {
  const double height = valueOf(bounds, "Height");
  return {valueOf(bounds, "X"), primaryHeight - (valueOf(bounds, "Y") + height),
          valueOf(bounds, "Width"), height};
}

bool fills(const Rect& window, const Rect& screen) {
  return std::abs(window.width - screen.width) < kTolerance &&
         std::abs(window.height - screen.height) < kTolerance &&
         std::abs(window.x - screen.x) < kTolerance && std::abs(window.y - screen.y) < kTolerance;
}

// Those that a show's window fills, once per window.
std::vector<Rect> filledScreens(const std::vector<WindowInfo>& windows,
                                const std::vector<Rect>& screens) {
  std::vector<Rect> filled;
  for (const auto& window : windows) {
    if (window.ownerName != kSlideShowOwner || !window.bounds) continue;
    const Rect bounds = turned(*window.bounds, screens.front().height);
    std::copy_if(screens.begin(), screens.end(), std::back_inserter(filled),
                 [&bounds](const Rect& screen) { return fills(bounds, screen); });
  }
  return filled;
}

}  // namespace

std::optional<Rect> screenOfSlideShow(const std::vector<WindowInfo>& windows,
                                      const std::vector<Rect>& screens) {
  if (screens.empty()) return std::nullopt;
  const Rect& primary = screens.front();
  const auto candidates = filledScreens(windows, screens);
  if (candidates.empty()) return std::nullopt;
  const auto other = std::find_if(candidates.begin(), candidates.end(),
                                  [&primary](const Rect& frame) { return frame != primary; });
  return other != candidates.end() ? *other : candidates.front();
}

std::optional<Rect> screenBeside(const Rect& show, const std::vector<WindowInfo>& windows,
                                 const std::vector<Rect>& screens) {
  if (screens.empty()) return std::nullopt;
  const auto filled = filledScreens(windows, screens);
  std::optional<Rect> beside;
  for (const Rect& screen : screens) {
    if (fills(show, screen)) continue;
    if (std::find(filled.begin(), filled.end(), screen) == filled.end()) return screen;
    if (!beside) beside = screen;
  }
  return beside;
}

}  // namespace torvane
