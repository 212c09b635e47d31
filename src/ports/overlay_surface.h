#pragma once

#include <memory>

#include "ports/geometry.h"

namespace torvane {

class OverlayView;

// A borderless, transparent window without a shadow above everything else, full-screen windows
// included, on every workspace. Clicks pass through it, it is never in the window cycle and never
// takes the focus. Frames are as in Screens (window_server.h). Main thread only.
class OverlaySurface {
 public:
  virtual ~OverlaySurface() = default;

  // Where it is now, wherever it was put: the system moves windows when displays come and go. Where
  // nothing moved it, the same to the bit as what was set.
  [[nodiscard]] virtual Rect frame() const = 0;
  virtual void setFrame(const Rect& frame) = 0;  // and paints the content anew
  [[nodiscard]] virtual bool isVisible() const = 0;

  // Whether its pixels can be translucent now. Where they cannot, each is ink or not.
  [[nodiscard]] virtual bool hasSoftEdges() const = 0;

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
