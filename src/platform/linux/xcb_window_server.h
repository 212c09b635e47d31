#pragma once

#include "platform/linux/x11_session.h"
#include "ports/window_server.h"

namespace torvane {

// The window manager's list. An Impress show is listed under the name of the one presentation
// program that the core knows.
class XcbWindowServer final : public WindowServer {
 public:
  // Null for a session without X: no list then.
  explicit XcbWindowServer(X11Session* session) : session_(session) {}

  [[nodiscard]] std::optional<std::vector<WindowInfo>> onScreenWindows() override;

 private:
  X11Session* session_;
};

// Whether this is the running show of LibreOffice Impress, rather than one of its document windows,
// or of our own viewer.
[[nodiscard]] bool isSlideShow(const X11Window& window);

}  // namespace torvane
