#pragma once

#include <memory>

#include "ink/geometry.h"
#include "ink/overlay_view.h"

namespace torvane {

// A borderless, transparent window without a shadow above everything else, full-screen windows
// included, on every workspace. Clicks pass through it, it is never in the window cycle and never
// takes the focus. Frames are as in Screens (window_server.h). Main thread only.
class OverlaySurface {
 public:
  virtual ~OverlaySurface() = default;

  [[nodiscard]] virtual Rect frame() const = 0;  // what was last set, to the bit
  virtual void setFrame(const Rect& frame) = 0;  // and paints the content anew
  [[nodiscard]] virtual bool isVisible() const = 0;

  // Shows it in front, whichever program is active. Neither call minds being made twice.
  virtual void orderFrontRegardless() = 0;
  virtual void orderOut() = 0;
};

class OverlaySurfaces {
 public:
  virtual ~OverlaySurfaces() = default;

  // A new surface, still hidden, that becomes the content's display; `content` outlives it. Null
  // when the session cannot show one.
  [[nodiscard]] virtual std::unique_ptr<OverlaySurface> makeOverlaySurface(
      const Rect& frame, OverlayView& content) = 0;
};

}  // namespace torvane
