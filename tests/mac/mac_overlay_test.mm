// The window over the slide show, which the system moves and resizes as it likes.

#include "mac/on_a_mac.h"
#include "platform/mac/mac_overlay_surface.h"

namespace torvane {
namespace {

struct StillClock final : Clock {
  [[nodiscard]] double unixTime() const override { return 0; }
  [[nodiscard]] double mediaTime() const override { return 0; }
};

class MacOverlay : public OnAMac {
 protected:
  NSWindow* window() { return fake::system().windows.at(0); }

  StillClock clock_;
  OverlayView view_;
};

TEST_F(MacOverlay, TellsWhereItsWindowReallyIs) {
  MacOverlaySurface surface({0, 0, 320, 240}, view_, clock_);
  EXPECT_EQ(surface.frame(), (Rect{0, 0, 320, 240}));
  fake::move(window(), {{-40, 25}, {320, 240}});
  EXPECT_EQ(surface.frame(), (Rect{-40, 25, 320, 240}));
  surface.setFrame({10, 20, 640, 480});
  EXPECT_EQ(surface.frame(), (Rect{10, 20, 640, 480}));
}

TEST_F(MacOverlay, LaysTheSlideOverTheWindowAsLargeAsItReallyIs) {
  MacOverlaySurface surface({0, 0, 1600, 900}, view_, clock_);
  EXPECT_EQ(view_.slideRect(), (Rect{0, 0, 1600, 900}));
  surface.setFrame({0, 0, 1920, 1200});
  EXPECT_EQ(view_.slideRect(), (Rect{0, 60, 1920, 1080}));
  fake::move(window(), {{0, 0}, {320, 240}});
  EXPECT_EQ(view_.slideRect(), (Rect{0, 30, 320, 180}));
}

}  // namespace
}  // namespace torvane
