// The window that carries the ink, kept over the slide show while one runs.
// Events: every accepted ink answer. Fields: overlay, frameTick. Ports: WindowServer, Screens,
// OverlaySurfaces.

#include "app/bridge_delegate.h"
#include "ink/slide_show_screen.h"

namespace torvane {
namespace {

// While the window is shown the screen is looked for every 2 s at 12.5 answers a second.
constexpr std::int64_t kSearchInterval = 25;

}  // namespace

void BridgeDelegate::updateOverlayWindow(bool presenting) {
  assertMainThread();
  if (!presenting) {
    if (overlay) overlay->orderOut();
    return;
  }
  ++frameTick;
  if (overlay && overlay->isVisible() && frameTick % kSearchInterval != 0) return;
  auto frame = slideShowScreenFrame();
  if (!frame) frame = platform_.screens.mainFrame();
  if (frame) showOverlay(*frame);
}

void BridgeDelegate::showOverlay(const Rect& frame) {
  if (!overlay) {
    overlay = platform_.overlaySurfaces.makeOverlaySurface(frame, overlayView);
  } else if (overlay->frame() != frame) {
    overlay->setFrame(frame);
  }
  if (overlay && !overlay->isVisible()) overlay->orderFrontRegardless();
}

std::optional<Rect> BridgeDelegate::slideShowScreenFrame() {
  const auto windows = platform_.windowServer.onScreenWindows();
  if (!windows) return std::nullopt;
  return screenOfSlideShow(*windows, platform_.screens.frames());
}

// Where the ink is counts as well as where a show is found. None without a show, and where there is
// no other screen.
std::optional<Rect> BridgeDelegate::screenBesideSlideShow() {
  const auto screens = platform_.screens.frames();
  if (screens.size() < 2) return std::nullopt;
  const auto windows = platform_.windowServer.onScreenWindows().value_or(std::vector<WindowInfo>());
  const bool hasInk = overlay && overlay->isVisible();
  const auto show = hasInk ? overlay->frame() : screenOfSlideShow(windows, screens);
  if (!show) return std::nullopt;
  return screenBeside(*show, windows, screens);
}

}  // namespace torvane
