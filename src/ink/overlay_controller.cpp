#include "ink/overlay_controller.h"

#include "ink/slide_show_screen.h"

namespace torvane {
namespace {

// While the window is shown the screen is looked for every 2 s at 12.5 answers a second.
constexpr std::int64_t kSearchInterval = 25;

}  // namespace

void OverlayController::updateOverlayWindow(bool presenting, bool counts) {
  if (!presenting) {
    if (overlay) overlay->orderOut();
    return;
  }
  if (counts) ++frameTick;
  if (isVisible() && (!counts || frameTick % kSearchInterval != 0)) return;
  auto frame = slideShowScreenFrame();
  if (!frame) frame = ports_.screens.mainFrame();
  if (frame) showOverlay(*frame);
}

void OverlayController::showOverlay(const Rect& frame) {
  if (!overlay) {
    overlay = ports_.surfaces.makeOverlaySurface(frame, overlayView);
  } else if (overlay->frame() != frame) {
    overlay->setFrame(frame);
  }
  if (overlay && !overlay->isVisible()) overlay->orderFrontRegardless();
}

std::optional<Rect> OverlayController::slideShowScreenFrame() const {
  const auto windows = ports_.windowServer.onScreenWindows();
  if (!windows) return std::nullopt;
  return screenOfSlideShow(*windows, ports_.screens.frames());
}

// Where the ink is counts as well as where a show is found.
std::optional<Rect> OverlayController::screenBesideSlideShow() const {
  const auto screens = ports_.screens.frames();
  if (screens.size() < 2) return std::nullopt;
  const auto windows = ports_.windowServer.onScreenWindows().value_or(std::vector<WindowInfo>());
  const auto show = isVisible() ? overlay->frame() : screenOfSlideShow(windows, screens);
  if (!show) return std::nullopt;
  return screenBeside(*show, windows, screens);
}

}  // namespace torvane
