#pragma once

#include <QRect>
#include <optional>
#include <vector>

#include "platform/linux/x11_session.h"
#include "ports/window_server.h"

namespace torvane {

// Qt's screens, and the ways to say where something is. The ports count points from a corner of the
// primary display: frames from its bottom left upwards, windows from its top left downwards. Qt
// counts points, and X11 pixels, from the top left of the whole desktop.
class QtScreens final : public Screens {
 public:
  // `session` may be null: then the primary display counts as the one with the focus.
  explicit QtScreens(X11Session* session) : session_(session) {}

  [[nodiscard]] std::vector<Rect> frames() const override;
  [[nodiscard]] std::optional<Rect> mainFrame() const override;

  [[nodiscard]] static Rect frameOf(const QRect& geometry);
  [[nodiscard]] static QRect geometryOf(const Rect& frame);

  // Where a window is, as the ports count it.
  [[nodiscard]] static Rect windowOf(const QRect& pixels);

 private:
  X11Session* session_;
};

}  // namespace torvane
