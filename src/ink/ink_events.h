#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "ink/overlay_view.h"
#include "ports/geometry.h"

namespace torvane {

struct BeginStroke {
  std::int64_t id = 0;
  Point at;

  bool operator==(const BeginStroke&) const = default;
};

struct AppendPoint {
  std::int64_t id = 0;
  Point at;

  bool operator==(const AppendPoint&) const = default;
};

struct DeleteStrokes {
  std::vector<std::int64_t> ids;

  bool operator==(const DeleteStrokes&) const = default;
};

struct ClearInk {
  bool operator==(const ClearInk&) const = default;
};

struct PlaceLaser {
  Point at;

  bool operator==(const PlaceLaser&) const = default;
};

struct EndLaser {
  bool operator==(const EndLaser&) const = default;
};

using InkEvent =
    std::variant<BeginStroke, AppendPoint, DeleteStrokes, ClearInk, PlaceLaser, EndLaser>;

// How many of these events, one at least, may be applied without holding the main thread for long,
// where the drawing order has `placesInOrder` entries. All of what an engine usually answers.
[[nodiscard]] std::size_t countForOneTurn(std::span<const InkEvent> events,
                                          std::size_t placesInOrder);

// Applies the events in order at the media time `now`. Whether there were any: even one that
// changes nothing, such as a point of no stroke, counts.
bool applyEvents(OverlayView& view, std::span<const InkEvent> events, double now);

// Whether the view is to be drawn again after events were `applied` or not. While the laser dot
// is alive it always is: that animates its fade.
[[nodiscard]] bool isRedrawDue(const OverlayView& view, bool applied, double now);

}  // namespace torvane
