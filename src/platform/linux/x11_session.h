#pragma once

#include <QRect>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvane {

// A window of the session as the X server and the window manager describe it.
struct X11Window {
  std::string className;  // the second of WM_CLASS's two names
  std::string processName;
  QRect pixels;  // of its contents, from the top left of the whole desktop
  bool isFullScreen = false;
};

// A connection of our own to the X server, XWayland's included. Main thread only.
class X11Session {
 public:
  // Null where the session has no X server.
  [[nodiscard]] static std::unique_ptr<X11Session> open();
  ~X11Session();
  X11Session(const X11Session&) = delete;
  X11Session& operator=(const X11Session&) = delete;

  // The windows that can be seen on the current workspace, front to back; none when no window
  // manager keeps a list.
  [[nodiscard]] std::optional<std::vector<X11Window>> windows();

  // Where the window with the keyboard focus is.
  [[nodiscard]] std::optional<QRect> activeWindow();

 private:
  struct Connection;
  explicit X11Session(std::unique_ptr<Connection> connection);

  std::unique_ptr<Connection> connection_;
};

}  // namespace torvane
