#pragma once

#include <QRect>
#include <optional>
#include <vector>

#include "ink/window_server.h"
#include "platform/linux/x11_session.h"

namespace torvane {

// Qt's screens, and the three ways to say where something is: in points from the bottom left of
// the primary display (the ports), in points from the top left (Qt), in pixels (X11).
class QtScreens final : public Screens {
 public:
  // `session` may be null: then the primary display counts as the one with the focus.
  explicit QtScreens(X11Session* session) : session_(session) {}

  [[nodiscard]] std::vector<Rect> frames() const override;
  [[nodiscard]] std::optional<Rect> mainFrame() const override;

  // Turns frames of the ports into Qt's geometry and back.
  [[nodiscard]] static Rect flipped(const Rect& rect);
  [[nodiscard]] static QRect geometryOf(const Rect& frame);

  // Points from the top left, for a place in pixels.
  [[nodiscard]] static Rect pointsFromPixels(const QRect& pixels);

 private:
  X11Session* session_;
};

}  // namespace torvane
