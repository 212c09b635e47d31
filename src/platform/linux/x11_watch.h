#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <utility>

#include "platform/linux/selection_watch.h"

namespace torvane {

// Tells of what changes on the X server, XWayland's included, over a connection that only listens:
// nobody has to look again and again. One listener each. Main thread only.
class X11Watch {
 public:
  // Null where the session has no X server.
  [[nodiscard]] static std::unique_ptr<X11Watch> open();
  ~X11Watch();
  X11Watch(const X11Watch&) = delete;
  X11Watch& operator=(const X11Watch&) = delete;

  // Whether windows can be translucent now.
  [[nodiscard]] bool hasCompositor() { return compositor_.hasOwner(); }

  // Whether there is an XEmbed tray now. `onChange` is called when it comes or goes.
  [[nodiscard]] bool hasTray() { return tray_.hasOwner(); }
  void onTrayChange(std::function<void()> onChange) { onTrayChange_ = std::move(onChange); }

  // From when it returns, calls `onChange` when another window may have come to the front, and when
  // the compositor came or went; twice a second at most, so that two programs that both want to be
  // in front do not keep the computer busy. Until it is given none.
  void onScreenChange(std::function<void()> onChange);

 private:
  X11Watch(xcb_connection_t* connection, int screen, xcb_window_t root);

  void takeEvents();

  xcb_connection_t* const connection_;
  const xcb_window_t root_;
  SelectionWatch compositor_, tray_;
  std::function<void()> onTrayChange_, onScreenChange_;
  QSocketNotifier events_;
  QTimer pause_;
};

}  // namespace torvane
