#pragma once

#include <memory>
#include <vector>

#include "ink/overlay_view.h"
#include "platform/linux/qt_canvas.h"

namespace torvane {

// A screen in memory that shows a view as a window does: it keeps its pixels and draws the parts
// that were asked for, each as it was asked.
class OverlayScreen final : public OverlayDisplay {
 public:
  OverlayScreen(OverlayView& view, double width, double height, double scale = 1)
      : view_(view), whole_{0, 0, width, height}, scale_(scale), pixels_(whole_, scale) {
    view_.setDisplay(this);
    view_.setSize(width, height);
    invalidate(whole_);
  }
  ~OverlayScreen() override { view_.setDisplay(nullptr); }
  OverlayScreen(const OverlayScreen&) = delete;
  OverlayScreen& operator=(const OverlayScreen&) = delete;

  void invalidate(const Rect& viewPart) override {
    if (!viewPart.isEmpty()) asked_.push_back(intersected(viewPart, whole_));
  }

  // One drawing of what was asked for so far; false when that was nothing.
  bool drawOnce() {
    Rect dirty;
    for (const Rect& part : std::exchange(asked_, {})) dirty = united(dirty, part);
    if (dirty.isEmpty()) return false;
    QtCanvas part(dirty, scale_);
    view_.draw(part, dirty, now);
    pixels_.copyLayer(part, dirty);
    ++draws;
    drawnArea += dirty.area();
    return true;
  }

  // Draws until nothing more is asked for.
  const QImage& settle() {
    while (drawOnce()) {
    }
    return pixels_.image();
  }

  // The same drawing painted from nothing.
  [[nodiscard]] QImage painted() const {
    QtCanvas canvas(whole_, scale_);
    view_.drawPlainly(canvas, now);
    return canvas.image();
  }

  double now = 0;
  int draws = 0;
  double drawnArea = 0;

 private:
  OverlayView& view_;
  Rect whole_;
  double scale_;
  QtCanvas pixels_;
  std::vector<Rect> asked_;
};

}  // namespace torvane
