#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "ink/overlay_view.h"
#include "ports/overlay_surface.h"
#include "ports/window_server.h"

namespace torvane {

// The window that carries the ink, kept over the slide show while one runs. Main thread only.
class OverlayController {
 public:
  struct Ports {
    WindowServer& windowServer;
    Screens& screens;
    OverlaySurfaces& surfaces;
  };

  explicit OverlayController(const Ports& ports) : ports_(ports) {}

  // What the window shows, whether it is there or not.
  [[nodiscard]] OverlayView& view() { return overlayView; }

  // With every accepted answer about ink. The show's screen is looked for with the first answer of
  // a show, and with one in 25 of those that count.
  void updateOverlayWindow(bool presenting, bool counts = true);

  [[nodiscard]] bool isVisible() const { return overlay && overlay->isVisible(); }
  [[nodiscard]] bool hasHardEdges() const { return overlay && !overlay->hasSoftEdges(); }

  // Of Screens: one that shows neither the ink nor a slide show. None without a show, and where
  // there is no other screen.
  [[nodiscard]] std::optional<Rect> screenBesideSlideShow() const;

 private:
  void showOverlay(const Rect& frame);
  [[nodiscard]] std::optional<Rect> slideShowScreenFrame() const;

  const Ports ports_;
  OverlayView overlayView;
  std::unique_ptr<OverlaySurface> overlay;  // made at the first need, then hidden and shown
  std::int64_t frameTick = 0;               // answers while presenting, over all shows
};

}  // namespace torvane
