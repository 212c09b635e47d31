#include "ink/overlay_controller.h"

#include <gtest/gtest.h>

#include "fakes/simulated_platform.h"

namespace torvane {
namespace {

constexpr Rect kPrimary = {0, 0, 1920, 1080};
constexpr Rect kRight = {1920, 0, 1280, 720};

class OverlayWindow : public testing::Test {
 protected:
  SimulatedPlatform platform;
  OverlayController overlay{{.windowServer = platform.ports.windowServer,
                             .screens = platform.ports.screens,
                             .surfaces = platform.ports.overlaySurfaces}};
  ShownOverlay& shown = platform.overlaySurfaces.shown;
  int& queries = platform.windowServer.queries;

  void SetUp() override { platform.screens.displays = {kPrimary, kRight}; }
  void present(int calls = 1) {
    for (int i = 0; i < calls; ++i) overlay.updateOverlayWindow(true);
  }
  // A slide show fills this screen from now on.
  void showOn(const Rect& screen) {
    const double top = kPrimary.height - (screen.y + screen.height);
    platform.windowServer.windows = {WindowInfo{
        "Microsoft PowerPoint",
        std::map<std::string, double>{
            {"X", screen.x}, {"Y", top}, {"Width", screen.width}, {"Height", screen.height}}}};
  }
};

TEST_F(OverlayWindow, NothingIsMadeWhileNothingIsPresented) {
  overlay.updateOverlayWindow(false);
  EXPECT_EQ(shown.timesMade, 0);
  EXPECT_EQ(queries, 0);
}

TEST_F(OverlayWindow, FirstPresentingCallShowsItOverTheSlideShow) {
  showOn(kRight);
  present();
  EXPECT_EQ(shown.timesMade, 1);
  EXPECT_EQ(shown.frame, kRight);
  EXPECT_TRUE(shown.isVisible);
  EXPECT_EQ(shown.timesFronted, 1);
  EXPECT_TRUE(shown.framesSet.empty());
}

TEST_F(OverlayWindow, SearchRunsOnThe1st25thAnd50thCallOnly) {
  std::vector<int> searches;
  for (int call = 1; call <= 60; ++call) {
    const int before = queries;
    present();
    if (queries != before) searches.push_back(call);
  }
  EXPECT_EQ(searches, (std::vector<int>{1, 25, 50}));
  EXPECT_EQ(shown.timesFronted, 1);
}

TEST_F(OverlayWindow, ComesBackToTheShowFromWhereverItWasMoved) {
  showOn(kRight);
  present();
  shown.frame = kPrimary;  // by the system, as displays came and went
  present(23);
  EXPECT_EQ(shown.frame, kPrimary);
  present();
  EXPECT_EQ(shown.frame, kRight);
  EXPECT_EQ(shown.framesSet, std::vector<Rect>{kRight});
}

TEST_F(OverlayWindow, ThatIsInItsPlaceIsNotSetAgain) {
  showOn(kRight);
  present(100);
  EXPECT_TRUE(shown.framesSet.empty());
  EXPECT_EQ(shown.frame, kRight);
}

TEST_F(OverlayWindow, HasHardEdgesOnceThereWasInkToSee) {
  shown.hasSoftEdges = false;
  EXPECT_FALSE(overlay.hasHardEdges());  // nothing was ever drawn
  present();
  EXPECT_TRUE(overlay.hasHardEdges());
  overlay.updateOverlayWindow(false);
  EXPECT_TRUE(overlay.hasHardEdges());
  shown.hasSoftEdges = true;  // a compositor was started
  EXPECT_FALSE(overlay.hasHardEdges());
}

TEST_F(OverlayWindow, CoversTheMainScreenWhenNoShowIsFound) {
  platform.screens.focused = 1;
  present();
  EXPECT_EQ(shown.frame, kRight);
}

TEST_F(OverlayWindow, CoversTheMainScreenWhenThereIsNoWindowList) {
  platform.windowServer.windows.reset();
  present();
  EXPECT_EQ(shown.frame, kPrimary);
}

TEST_F(OverlayWindow, WithoutAnyScreenNothingHappens) {
  platform.screens.displays.clear();
  showOn(kPrimary);
  present(3);
  EXPECT_EQ(shown.timesMade, 0);
  EXPECT_EQ(queries, 3);
}

TEST_F(OverlayWindow, ShownWindowStaysWhenTheLastScreenGoes) {
  present(24);
  platform.screens.displays.clear();
  present();
  EXPECT_TRUE(shown.isVisible);
  EXPECT_EQ(shown.frame, kPrimary);
}

TEST_F(OverlayWindow, FollowsAShowToAnotherScreenAtTheNextSearch) {
  showOn(kPrimary);
  present(1);
  showOn(kRight);
  present(23);
  EXPECT_EQ(shown.frame, kPrimary);
  present(1);
  EXPECT_EQ(shown.framesSet, (std::vector<Rect>{kRight}));
  EXPECT_EQ(shown.timesFronted, 1);
}

TEST_F(OverlayWindow, FrameIsSetOnlyWhenItDiffers) {
  showOn(kRight);
  present(100);
  EXPECT_TRUE(shown.framesSet.empty());
}

TEST_F(OverlayWindow, EndOfTheShowHidesItAndKeepsItForTheNext) {
  present(3);
  overlay.updateOverlayWindow(false);
  EXPECT_FALSE(shown.isVisible);
  present();
  EXPECT_TRUE(shown.isVisible);
  EXPECT_EQ(shown.timesMade, 1);
  const int before = queries;
  present(20);
  EXPECT_EQ(queries, before) << "the 5th to the 24th";
  present();
  EXPECT_EQ(queries, before + 1) << "the 25th over all shows";
}

TEST_F(OverlayWindow, ShowThatStartsOnAnotherScreenIsFoundAtOnce) {
  showOn(kPrimary);
  present(2);
  overlay.updateOverlayWindow(false);
  showOn(kRight);
  present();
  EXPECT_EQ(shown.frame, kRight);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(OverlayWindow, UnpluggedScreenMovesItToTheOneThatIsLeft) {
  showOn(kRight);
  present(24);
  platform.screens.displays = {kPrimary};
  platform.windowServer.windows->clear();
  present();
  EXPECT_EQ(shown.frame, kPrimary);
  EXPECT_TRUE(shown.isVisible);
}

TEST_F(OverlayWindow, HelperGoesOnWhereTheSessionCannotShowOne) {
  platform.overlaySurfaces.isPossible = false;
  present(30);
  overlay.updateOverlayWindow(false);
  EXPECT_FALSE(overlay.isVisible());
  EXPECT_EQ(queries, 30) << "it is tried again each time";
}

}  // namespace
}  // namespace torvane
