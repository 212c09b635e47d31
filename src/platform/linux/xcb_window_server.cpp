#include "platform/linux/xcb_window_server.h"

#include "platform/linux/qt_screens.h"

namespace torvane {
namespace {

WindowInfo described(const X11Window& window) {
  const Rect points = QtScreens::windowOf(window.pixels);
  return {isSlideShow(window) ? "Microsoft PowerPoint" : window.className,
          {{{"X", points.x}, {"Y", points.y}, {"Width", points.width}, {"Height", points.height}}}};
}

}  // namespace

// LibreOffice's document windows, which can be full-screen too, have a class of their own per kind
// of document.
bool isSlideShow(const X11Window& window) {
  if (!window.isFullScreen) return false;
  return window.processName == "torvane-show" ||
         (window.processName == "soffice.bin" && !window.className.starts_with("libreoffice-"));
}

std::optional<std::vector<WindowInfo>> XcbWindowServer::onScreenWindows() {
  const auto windows = session_ ? session_->windows() : std::nullopt;
  if (!windows) return std::nullopt;
  std::vector<WindowInfo> listed;
  for (const X11Window& window : *windows) listed.push_back(described(window));
  return listed;
}

}  // namespace torvane
