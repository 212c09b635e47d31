#include "platform/linux/qt_screens.h"

#include <gtest/gtest.h>

#include "ink/slide_show_screen.h"
#include "platform/linux/xcb_window_server.h"

namespace torvane {
namespace {

const Rect kPrimary{0, 0, 1280, 800};
const Rect kRight{1280, 32, 1024, 768};  // its top is level with the primary's
const Rect kLeft{-800, 400, 800, 600};   // 200 points higher than the primary

std::vector<Rect> frames() {
  return QtScreens(nullptr).frames();
}

WindowInfo showFilling(const QRect& geometry) {
  return {"Microsoft PowerPoint",
          {{{"X", geometry.x()},
            {"Y", geometry.y()},
            {"Width", geometry.width()},
            {"Height", geometry.height()}}}};
}

X11Window show() {
  return {"Soffice", "soffice.bin", {0, 0, 1280, 800}, true};
}

TEST(QtScreens, GivesFramesFromTheBottomLeftOfThePrimary) {
  EXPECT_EQ(frames(), (std::vector<Rect>{kPrimary, kRight, kLeft}));
}

TEST(QtScreens, TheFocusIsOnThePrimaryWhereNobodyKnows) {
  EXPECT_EQ(QtScreens(nullptr).mainFrame(), kPrimary);
}

TEST(QtScreens, TurnsFramesIntoGeometryAndBack) {
  EXPECT_EQ(QtScreens::geometryOf(kPrimary), QRect(0, 0, 1280, 800));
  EXPECT_EQ(QtScreens::geometryOf(kRight), QRect(1280, 0, 1024, 768));
  EXPECT_EQ(QtScreens::geometryOf(kLeft), QRect(-800, -200, 800, 600));
  EXPECT_EQ(QtScreens::frameOf(QRect(-800, -200, 800, 600)), kLeft);
}

TEST(QtScreens, DividesPixelsOnAFineScreen) {
  EXPECT_EQ(QtScreens::windowOf(QRect(1280, 0, 2048, 1536)), (Rect{1280, 0, 1024, 768}));
  EXPECT_EQ(QtScreens::windowOf(QRect(-800, -200, 800, 600)), (Rect{-800, -200, 800, 600}));
}

TEST(QtScreens, AShowLeftOfAndAboveTheFirstScreenIsFound) {
  EXPECT_EQ(screenOfSlideShow({showFilling({-800, -200, 800, 600})}, frames()), kLeft);
}

TEST(QtScreens, ASecondaryScreenIsPreferred) {
  EXPECT_EQ(screenOfSlideShow({showFilling({0, 0, 1280, 800}), showFilling({1280, 0, 1024, 768})},
                              frames()),
            kRight);
}

TEST(ImpressShow, IsSofficesFullScreenWindowWithoutADocumentsClass) {
  EXPECT_TRUE(isSlideShow(show()));
}

TEST(ViewersShow, IsItsFullScreenWindow) {
  X11Window window = show();
  window.processName = window.className = "torvane-show";
  EXPECT_TRUE(isSlideShow(window));
  window.isFullScreen = false;  // such as an alert
  EXPECT_FALSE(isSlideShow(window));
}

TEST(ImpressShow, IsNoDocumentAndNoOtherProgram) {
  for (const char* name : {"libreoffice-impress", "libreoffice-writer"}) {
    X11Window document = show();
    document.className = name;
    EXPECT_FALSE(isSlideShow(document)) << name;
  }
  X11Window window = show();
  window.isFullScreen = false;
  EXPECT_FALSE(isSlideShow(window));
  window = show();
  window.processName = "firefox";
  EXPECT_FALSE(isSlideShow(window));
}

TEST(XcbWindowServer, HasNoListWithoutAnXServer) {
  EXPECT_EQ(XcbWindowServer(nullptr).onScreenWindows(), std::nullopt);
}

}  // namespace
}  // namespace torvane
