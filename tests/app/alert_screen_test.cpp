#include "fakes/helper_test.h"

namespace torvane {
namespace {

constexpr Rect kPrimary = {0, 0, 1920, 1080};
constexpr Rect kRight = {1920, 0, 1280, 720};
constexpr Rect kLeft = {-800, 0, 800, 600};

// What the room should not see opens on a screen without the show.
class AlertScreen : public HelperTest {
 protected:
  void SetUp() override {
    launch();
    platform.screens.displays = {kPrimary, kRight};
  }
  void showOn(const Rect& screen) {
    const double top = kPrimary.height - (screen.y + screen.height);
    platform.windowServer.windows->push_back(WindowInfo{
        "Microsoft PowerPoint",
        std::map<std::string, double>{
            {"X", screen.x}, {"Y", top}, {"Width", screen.width}, {"Height", screen.height}}});
  }
  // The screen of the question about a new device.
  std::optional<Rect> asked() {
    invite(platform.peerLink.newPeer("Ann"), 1);
    return platform.alerts.shown.back().screen;
  }
};

TEST_F(AlertScreen, IsAnyWithoutAShow) {
  EXPECT_EQ(asked(), std::nullopt);
  EXPECT_EQ(platform.alerts.shown.back().message, "Pair with “Ann”?");
}

TEST_F(AlertScreen, IsThePrimaryWhileTheShowIsOnAnother) {
  showOn(kRight);
  EXPECT_EQ(asked(), kPrimary);
}

TEST_F(AlertScreen, IsAnotherWhileTheShowIsOnThePrimary) {
  showOn(kPrimary);
  EXPECT_EQ(asked(), kRight);
}

TEST_F(AlertScreen, IsAnyWhereThereIsNoOther) {
  platform.screens.displays = {kPrimary};
  showOn(kPrimary);
  EXPECT_EQ(asked(), std::nullopt);
}

TEST_F(AlertScreen, IsAnyWhereTheOtherShowsTheSame) {
  platform.screens.displays = {kPrimary, kPrimary};
  showOn(kPrimary);
  EXPECT_EQ(asked(), std::nullopt);
}

TEST_F(AlertScreen, IsThePresentersWhereHisNotesFillIt) {
  showOn(kPrimary);
  showOn(kRight);
  EXPECT_EQ(asked(), kPrimary);  // the show is preferred on the other one
}

TEST_F(AlertScreen, IsRatherOneThatNothingFills) {
  platform.screens.displays = {kPrimary, kRight, kLeft};
  showOn(kPrimary);
  showOn(kRight);
  EXPECT_EQ(asked(), kLeft);
}

TEST_F(AlertScreen, IsNotTheOneWithTheInkWhereNoShowIsFound) {
  platform.screens.focused = 1;
  platform.http.server = [](const HttpRequest&) {
    return FakeAnswer{httpResult(200, R"({"presenting": true, "seq": 0, "events": []})")};
  };
  platform.time.advance(5);
  ASSERT_TRUE(platform.overlaySurfaces.shown.isVisible);
  ASSERT_EQ(platform.overlaySurfaces.shown.frame, kRight);
  EXPECT_EQ(asked(), kPrimary);
}

TEST_F(AlertScreen, HoldsForEveryAlert) {
  showOn(kRight);
  platform.loginItem.failure = "The folder cannot be written to.";
  platform.privacyDatabase.isReadable = false;
  EXPECT_EQ(asked(), kPrimary);
  for (const char* title : {"Launch at Login", "How Does This Work?", "Stop File-Access Prompts…",
                            "Forget Paired Devices…"}) {
    choose(title);
  }
  platform.peerLink.invite(platform.peerLink.newPeer("Relic"), std::nullopt);
  platform.time.runDue();
  ASSERT_EQ(platform.alerts.shown.size(), 6U);
  for (const auto& alert : platform.alerts.shown) EXPECT_EQ(alert.screen, kPrimary);
}

}  // namespace
}  // namespace torvane
