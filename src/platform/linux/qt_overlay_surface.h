#pragma once

#include <QTimer>
#include <memory>

#include "ink/overlay_view.h"
#include "platform/linux/focused_window.h"
#include "platform/linux/overlay_widget.h"
#include "platform/linux/x11_watch.h"
#include "ports/clock.h"
#include "ports/overlay_surface.h"

namespace torvane {

// A window that the window manager does not manage: the only kind that stays above a full-screen
// window under all of them. While it is shown it comes back to the front when another window has
// gone there.
class QtOverlaySurface final : public OverlaySurface {
 public:
  QtOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock, X11Watch* x11);
  ~QtOverlaySurface() override;
  QtOverlaySurface(const QtOverlaySurface&) = delete;
  QtOverlaySurface& operator=(const QtOverlaySurface&) = delete;

  [[nodiscard]] Rect frame() const override;
  void setFrame(const Rect& frame) override;
  [[nodiscard]] bool isVisible() const override { return widget_.isVisible(); }
  [[nodiscard]] bool hasSoftEdges() const override { return !x11_ || x11_->hasCompositor(); }
  void orderFrontRegardless() override;
  void orderOut() override;

 private:
  void listen(bool toScreenChanges);
  void followScreens();
  void comeToFront();
  void followCompositor();

  Rect wanted_;  // where it was put last
  OverlayView& content_;
  X11Watch* x11_;
  OverlayWidget widget_;
  // The program's alerts are never under a drawing. They cannot lie above this window, which no
  // window manager orders.
  FocusedWindow alert_{[this](const QRect& place) { widget_.setHole(place); }};
  bool hadCompositor_ = true;
  QTimer compositorStart_;  // runs for a while after one has come
};

class QtOverlaySurfaces final : public OverlaySurfaces {
 public:
  // `x11` is null where there is no X server: said once on standard error, and no surfaces are made
  // then.
  QtOverlaySurfaces(const Clock& clock, X11Watch* x11);

  [[nodiscard]] std::unique_ptr<OverlaySurface> makeOverlaySurface(const Rect& frame,
                                                                   OverlayView& content) override;

 private:
  const Clock& clock_;
  X11Watch* x11_;
};

}  // namespace torvane
