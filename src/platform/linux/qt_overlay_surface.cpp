#include "platform/linux/qt_overlay_surface.h"

#include <QGuiApplication>
#include <cstdio>

#include "platform/linux/qt_screens.h"

namespace torvane {
namespace {

constexpr int kInFrontMilliseconds = 500;
constexpr int kCompositorStartMilliseconds = 2000;

// Without a display there is nothing to stand in front of, and tests want their surfaces.
bool isOffscreen() {
  return QGuiApplication::platformName() == "offscreen";
}

}  // namespace

QtOverlaySurface::QtOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock,
                                   X11Session* session)
    : content_(content), session_(session), widget_(content, clock) {
  inFront_.setInterval(kInFrontMilliseconds);
  QObject::connect(&inFront_, &QTimer::timeout, &widget_, [this] { keepInFront(); });
  setFrame(frame);
}

void QtOverlaySurface::setFrame(const Rect& frame) {
  frame_ = frame;
  widget_.setGeometry(QtScreens::geometryOf(frame));
  widget_.update();
}

void QtOverlaySurface::orderFrontRegardless() {
  followCompositor();
  widget_.show();
  widget_.raise();
  inFront_.start();
}

void QtOverlaySurface::orderOut() {
  inFront_.stop();
  widget_.hide();
  content_.discardLayer();
}

// Displays come and go, and take windows with them.
void QtOverlaySurface::keepInFront() {
  followCompositor();
  const QRect wanted = QtScreens::geometryOf(frame_);
  if (widget_.geometry() != wanted) widget_.setGeometry(wanted);
  widget_.raise();
}

// A compositor that is only just starting can miss that the window loses its shape, and would cut
// off all other ink from then on.
void QtOverlaySurface::followCompositor() {
  const bool hasCompositor = !session_ || session_->hasCompositor();
  if (!hasCompositor) compositorStart_.setRemainingTime(kCompositorStartMilliseconds);
  widget_.setTranslucent(hasCompositor && compositorStart_.hasExpired());
}

QtOverlaySurfaces::QtOverlaySurfaces(const Clock& clock, X11Session* session)
    : clock_(clock), session_(session) {
  if (session_ || isOffscreen()) return;
  std::fputs(
      "Torvane P2P Helper: ink will not be shown over slide shows, because this session has no X "
      "server (XWayland) to show it with.\n",
      stderr);
}

std::unique_ptr<OverlaySurface> QtOverlaySurfaces::makeOverlaySurface(const Rect& frame,
                                                                      OverlayView& content) {
  if (!session_ && !isOffscreen()) return nullptr;
  return std::make_unique<QtOverlaySurface>(frame, content, clock_, session_);
}

}  // namespace torvane
