#pragma once

#include <QDeadlineTimer>
#include <QTimer>
#include <memory>

#include "app/clock.h"
#include "ink/overlay_surface.h"
#include "platform/linux/overlay_widget.h"
#include "platform/linux/x11_session.h"

namespace torvane {

// A window that the window manager does not manage: the only kind that stays above a full-screen
// window under all of them. While it is shown it puts itself in front twice a second.
class QtOverlaySurface final : public OverlaySurface {
 public:
  QtOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock,
                   X11Session* session);

  [[nodiscard]] Rect frame() const override { return frame_; }
  void setFrame(const Rect& frame) override;
  [[nodiscard]] bool isVisible() const override { return widget_.isVisible(); }
  void orderFrontRegardless() override;
  void orderOut() override;

 private:
  void keepInFront();
  void followCompositor();

  Rect frame_;
  OverlayView& content_;
  X11Session* session_;
  OverlayWidget widget_;
  QTimer inFront_;
  QDeadlineTimer compositorStart_;  // expired where there was one from the beginning
};

class QtOverlaySurfaces final : public OverlaySurfaces {
 public:
  // `session` is null where there is no X server: said once on standard error, and no surfaces
  // are made then.
  QtOverlaySurfaces(const Clock& clock, X11Session* session);

  [[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface(const Rect& frame,
                                                                   OverlayView& content) override;

 private:
  const Clock& clock_;
  X11Session* session_;
};

}  // namespace torvane
