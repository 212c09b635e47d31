#include "platform/linux/qt_overlay_surface.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QScreen>
#include <cstdio>
#include <utility>

#include "platform/linux/qt_screens.h"

namespace torvane {
namespace {

constexpr int kCompositorStartMilliseconds = 2000;

// Without a display there is nothing to stand in front of, and tests want their surfaces.
bool isOffscreen() {
  return QGuiApplication::platformName() == "offscreen";
}

// Qt sends what it asks of the X server when it has to wait for something, which may be long after.
void flush() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  // Qt's platform without a screen has the interface, but no server behind it.
  if (x11 != nullptr && x11->connection() != nullptr) xcb_flush(x11->connection());
}

}  // namespace

QtOverlaySurface::QtOverlaySurface(const Rect& frame, OverlayView& content, const Clock& clock,
                                   X11Watch* x11)
    : content_(content), x11_(x11), widget_(content, clock, makeX11WindowShape()) {
  compositorStart_.setSingleShot(true);
  compositorStart_.setInterval(kCompositorStartMilliseconds);
  QObject::connect(&compositorStart_, &QTimer::timeout, &widget_, [this] { followCompositor(); });
  followScreens();
  setFrame(frame);
}

QtOverlaySurface::~QtOverlaySurface() {
  listen(false);
}

Rect QtOverlaySurface::frame() const {
  return QtScreens::frameOf(widget_.geometry());
}

void QtOverlaySurface::setFrame(const Rect& frame) {
  wanted_ = frame;
  widget_.setGeometry(QtScreens::geometryOf(frame));
  widget_.update();
}

void QtOverlaySurface::orderFrontRegardless() {
  listen(true);
  followCompositor();
  widget_.show();
  comeToFront();
}

void QtOverlaySurface::orderOut() {
  listen(false);
  hadCompositor_ = true;  // one that comes meanwhile has time to start
  compositorStart_.stop();
  widget_.hide();
  content_.discardLayer();
}

void QtOverlaySurface::listen(bool toScreenChanges) {
  if (!x11_) return;
  std::function<void()> onChange;
  if (toScreenChanges) {
    onChange = [this] {
      followCompositor();
      comeToFront();
    };
  }
  x11_->onScreenChange(std::move(onChange));
}

// Displays come and go, and take windows with them.
void QtOverlaySurface::followScreens() {
  const auto follow = [this] {
    if (isVisible()) comeToFront();
  };
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &widget_, follow,
                   Qt::QueuedConnection);
  QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &widget_, follow,
                   Qt::QueuedConnection);
  QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &widget_, follow, Qt::QueuedConnection);
}

void QtOverlaySurface::comeToFront() {
  const QRect wanted = QtScreens::geometryOf(wanted_);
  if (widget_.geometry() != wanted) widget_.setGeometry(wanted);
  widget_.raise();
  flush();
}

// A compositor that is only just starting can miss that the window loses its shape, and would cut
// off all other ink from then on.
void QtOverlaySurface::followCompositor() {
  const bool hasCompositor = !x11_ || x11_->hasCompositor();
  if (hasCompositor && !hadCompositor_) compositorStart_.start();
  hadCompositor_ = hasCompositor;
  widget_.setTranslucent(hasCompositor && !compositorStart_.isActive());
}

QtOverlaySurfaces::QtOverlaySurfaces(const Clock& clock, X11Watch* x11) : clock_(clock), x11_(x11) {
  if (x11_ || isOffscreen()) return;
  std::fputs(
      "Torvane P2P Helper: ink will not be shown over slide shows, because this session has no X "
      "server (XWayland) to show it with.\n",
      stderr);
}

std::unique_ptr<OverlaySurface> QtOverlaySurfaces::makeOverlaySurface(const Rect& frame,
                                                                      OverlayView& content) {
  if (!x11_ && !isOffscreen()) return nullptr;
  return std::make_unique<QtOverlaySurface>(frame, content, clock_, x11_);
}

}  // namespace torvane
