#pragma once

#import <AppKit/AppKit.h>

#include "ink/overlay_view.h"
#include "ports/clock.h"
#include "ports/overlay_surface.h"

// Shows the ink; its origin is its top left corner.
@interface TorvaneOverlayContent : NSView
// Both outlive this view, unless it is told to forget them.
- (instancetype)initWithFrame:(NSRect)frame
                      content:(torvane::OverlayView*)content
                        clock:(const torvane::Clock*)clock;
- (void)forgetContent;
@end

namespace torvane {

class MacOverlaySurface final : public OverlaySurface, private OverlayDisplay {
 public:
  MacOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock);
  ~MacOverlaySurface() override;
  MacOverlaySurface(const MacOverlaySurface&) = delete;
  MacOverlaySurface& operator=(const MacOverlaySurface&) = delete;

  [[nodiscard]] Rect frame() const override;
  void setFrame(const Rect& frame) override;
  [[nodiscard]] bool isVisible() const override;
  [[nodiscard]] bool hasSoftEdges() const override { return true; }
  void orderFrontRegardless() override;
  void orderOut() override;

 private:
  void invalidate(const Rect& viewPart) override;

  OverlayView& content_;
  NSWindow* window_;
  TorvaneOverlayContent* view_;
};

class MacOverlaySurfaces final : public OverlaySurfaces {
 public:
  explicit MacOverlaySurfaces(const Clock& clock) : clock_(clock) {}

  [[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface(const Rect& frame,
                                                                   OverlayView& content) override {
    return std::make_unique<MacOverlaySurface>(frame, content, clock_);
  }

 private:
  const Clock& clock_;
};

}  // namespace torvane
