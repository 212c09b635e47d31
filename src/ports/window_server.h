#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ports/geometry.h"

namespace torvane {

// One on-screen window of any application, as the window server lists it.
struct WindowInfo {
  std::optional<std::string> ownerName;  // the application's name
  // "X", "Y", "Width", "Height" in points, origin at the top left of the primary display, y
  // growing downwards; none when the server gave no such dictionary.
  std::optional<std::map<std::string, double>> bounds;
};

// Main thread only.
class WindowServer {
 public:
  virtual ~WindowServer() = default;

  // The windows on the screen from front to back, without the desktop's own; none when the
  // server gives no list.
  [[nodiscard]] virtual std::optional<std::vector<WindowInfo>> onScreenWindows() = 0;
};

// The displays. Frames are in points, origin at the bottom left of the primary display, y growing
// upwards. Main thread only.
class Screens {
 public:
  virtual ~Screens() = default;

  [[nodiscard]] virtual std::vector<Rect> frames() const = 0;  // the primary display first

  // The display with the keyboard focus; none when there is no display.
  [[nodiscard]] virtual std::optional<Rect> mainFrame() const = 0;
};

}  // namespace torvane
