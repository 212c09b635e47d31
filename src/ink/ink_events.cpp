#include "ink/ink_events.h"

#include <algorithm>

namespace torvane {
namespace {

constexpr double kLaserFadesFrom = 0.4;  // seconds after the dot was placed

// A step is about what a stroke's begin costs, some hundred nanoseconds.
constexpr std::size_t kStepsPerTurn = 50'000;
constexpr std::size_t kPlacesPerStep = 8;  // of the drawing order, which a deletion goes through

std::size_t stepsFor(const InkEvent& event, std::size_t placesInOrder) {
  const auto* deletion = std::get_if<DeleteStrokes>(&event);
  return deletion != nullptr ? 1 + deletion->ids.size() + placesInOrder / kPlacesPerStep : 1;
}

struct Applying {
  OverlayView& view;
  double now;

  void operator()(const BeginStroke& event) const { view.begin(event.id, event.at); }
  void operator()(const AppendPoint& event) const { view.append(event.id, event.at); }
  void operator()(const DeleteStrokes& event) const { view.remove(event.ids); }
  void operator()(const ClearInk&) const { view.clearInk(); }
  void operator()(const PlaceLaser& event) const { view.placeLaser(event.at, now); }
  // The dot does not vanish at once: it is aged to where its fade begins.
  void operator()(const EndLaser&) const {
    view.laserAt = std::min(view.laserAt, now - kLaserFadesFrom);
  }
};

}  // namespace

std::size_t countForOneTurn(std::span<const InkEvent> events, std::size_t placesInOrder) {
  std::size_t count = 0;
  std::size_t steps = 0;
  for (const auto& event : events) {
    steps += stepsFor(event, placesInOrder + count);
    if (count > 0 && steps > kStepsPerTurn) break;
    ++count;
  }
  return count;
}

bool applyEvents(OverlayView& view, std::span<const InkEvent> events, double now) {
  for (const auto& event : events) std::visit(Applying{view, now}, event);
  return !events.empty();
}

bool isRedrawDue(const OverlayView& view, bool applied, double now) {
  return applied || view.isLaserAlive(now);
}

}  // namespace torvane
