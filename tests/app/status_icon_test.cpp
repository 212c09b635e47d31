#include "app/status_icon.h"

#include "fakes/helper_test.h"

namespace torvane {
namespace {

TEST(StatusIconValue, WaitsForTheFirstDevice) {
  const auto icon = statusIcon({}, true);
  EXPECT_EQ(icon.symbolName, "dot.radiowaves.right");
  EXPECT_EQ(icon.toolTip, "Torvane P2P Helper: waiting for the iPad app");
  EXPECT_EQ(icon.accessibilityDescription, "Torvane P2P Helper");
}

TEST(StatusIconValue, NamesTheConnectedDevicesInTheirOrder) {
  const auto icon = statusIcon({"Zoe's iPad", "A & B_1"}, true);
  EXPECT_EQ(icon.symbolName, "dot.radiowaves.left.and.right");
  EXPECT_EQ(icon.toolTip, "Torvane P2P Helper: iPad connected (Zoe's iPad, A & B_1)");
}

TEST(StatusIconValue, IsDimmedWheneverTheEngineIsNotRunning) {
  EXPECT_TRUE(statusIcon({}, false).appearsDisabled);
  EXPECT_TRUE(statusIcon({"iPad"}, false).appearsDisabled);
  EXPECT_FALSE(statusIcon({}, true).appearsDisabled);
  EXPECT_FALSE(statusIcon({"iPad"}, true).appearsDisabled);
}

class ShownIcon : public HelperTest {
 protected:
  const StatusIcon& shown() { return platform.statusBar.shown.icons.back(); }
};

TEST_F(ShownIcon, StartsWaitingAndDimmed) {
  construct().applicationDidFinishLaunching();
  EXPECT_EQ(shown(), statusIcon({}, false));
}

TEST_F(ShownIcon, IsRefreshedAfterEveryProbeWhetherOrNotItChanged) {
  platform.runEngine();
  launch();
  const auto before = platform.statusBar.shown.icons.size();
  platform.time.advance(6);
  EXPECT_EQ(platform.statusBar.shown.icons.size(), before + 2);
  EXPECT_EQ(shown(), statusIcon({}, true));
}

TEST_F(ShownIcon, IsRefreshedAfterAnAdvertisingErrorAndDoesNotReflectIt) {
  launch();
  const auto before = platform.statusBar.shown.icons;
  platform.peerLink.failAdvertising("no network");
  platform.time.runDue();
  EXPECT_EQ(platform.statusBar.shown.icons.size(), before.size() + 1);
  EXPECT_EQ(shown(), before.back());
  EXPECT_EQ(platform.statusBar.shown.menu->menuNeedsUpdate().at(0).title,
            "Not advertising: no network");
}

TEST_F(ShownIcon, KeepsTheConnectedAfterAnAdvertisingError) {
  launch();
  connect(platform.peerLink.newPeer("Zoë's iPad"));
  platform.peerLink.failAdvertising("no network");
  platform.time.runDue();
  EXPECT_EQ(shown(), statusIcon({"Zoë's iPad"}, false));
}

TEST_F(ShownIcon, FollowsThoseWhoGo) {
  launch();
  const auto first = platform.peerLink.newPeer("First");
  const auto second = platform.peerLink.newPeer("Second");
  connect(first);
  connect(second);
  disconnect(first);
  EXPECT_EQ(shown(), statusIcon({"Second"}, false));
  disconnect(second);
  EXPECT_EQ(shown(), statusIcon({}, false));
}

}  // namespace
}  // namespace torvane
