#pragma once

#include <optional>
#include <vector>

#include "ports/geometry.h"
#include "ports/window_server.h"

namespace torvane {

// The frame of the screen that a slide show's window fills, for windows from front to back and
// screens with the primary one first. Of several such screens one that is not the primary is
// preferred; none when there is no such window.
[[nodiscard]] std::optional<Rect> screenOfSlideShow(const std::vector<WindowInfo>& windows,
                                                    const std::vector<Rect>& screens);

// The first screen besides the one with the show; rather one that no other show's window fills,
// such as the presenter's own. None where there is no other.
[[nodiscard]] std::optional<Rect> screenBeside(const Rect& show,
                                               const std::vector<WindowInfo>& windows,
                                               const std::vector<Rect>& screens);

}  // namespace torvane
