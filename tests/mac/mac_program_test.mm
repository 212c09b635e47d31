// The program as its user sees it.

#include "mac/mac_program.h"

namespace torvane {
namespace {

TEST_F(MacProgram, LaunchesInItsOrder) {
  run([&] {
    EXPECT_LT(placeOf("policy 1"), placeOf("status item -1"));
    EXPECT_LT(placeOf("status item -1"), placeOf("session Zoë's Mac no identity encryption 1"));
    EXPECT_LT(placeOf("session Zoë's Mac no identity encryption 1"),
              placeOf("advertiser Zoë's Mac no info torvane"));
    EXPECT_LT(placeOf("advertiser Zoë's Mac no info torvane"), placeOf("start advertising"));
    EXPECT_LT(placeOf("start advertising"), placeOf("trust with a prompt"));
    EXPECT_LT(placeOf("trust with a prompt"), placeOf("GET http://127.0.0.1:8484/api/state"));
    EXPECT_LT(placeOf("GET http://127.0.0.1:8484/api/state"), system().log.size());
  });
}

TEST_F(MacProgram, WelcomesTheUserOnce) {
  system().defaults.clear();
  run([&] {
    EXPECT_LT(placeOf("defaults set didShowWelcome"), placeOf("to the front"));
    EXPECT_LT(placeOf("to the front"), placeOf("alert Welcome to Torvane P2P Helper"));
    EXPECT_LT(placeOf("alert Welcome to Torvane P2P Helper"), placeOf("trust with a prompt"));
  });
}

TEST_F(MacProgram, ShowsATemplateSymbolThatFollowsTheState) {
  run([&] {
    EXPECT_EQ(shownBy(system().statusItem),
              "dot.radiowaves.right, Torvane P2P Helper, template, dimmed, "
              "Torvane P2P Helper: waiting for the iPad app");
    change(pad(), MCSessionStateConnected);
    EXPECT_EQ(shownBy(system().statusItem),
              "dot.radiowaves.left.and.right, Torvane P2P Helper, template, dimmed, "
              "Torvane P2P Helper: iPad connected (Zoë's iPad)");
  });
}

TEST_F(MacProgram, FillsTheMenuEachTimeAndQuitsFromIt) {
  run([&] {
    NSMenu* menu = system().statusItem.menu;
    for (int i = 0; i < 2; ++i) [menu.delegate menuNeedsUpdate:menu];
    ASSERT_FALSE(system().items.empty());
    NSMenuItem* quit = system().items.back();
    EXPECT_EQ(fake::title(quit), "Quit");
    EXPECT_TRUE(quit.enabled);
    fake::choose(quit);
    EXPECT_FALSE(said("terminate"));  // not while the menu's own code is still at work
    fake::settle();
    EXPECT_LT(placeOf("terminate"), placeOf("stop advertising"));
    EXPECT_LT(placeOf("stop advertising"), placeOf("disconnect"));
    EXPECT_LT(placeOf("disconnect"), placeOf("ended"));
    EXPECT_LT(placeOf("ended"), system().log.size());
  });
}

TEST_F(MacProgram, ShowsTheOverlayWithItsSettings) {
  run([&] {
    system().listedWindows = {{"Finder", {{0, 0}, {320, 240}}},
                              {"Microsoft PowerPoint", {{0, 0}, {320, 240}}}};
    fake::respond(system().requests.back(), 200, "application/json", "{}");
    fake::settle();
    fake::advance(0.1);
    ASSERT_EQ(system().requests.back().url, "http://127.0.0.1:8484/api/ink/events?since=0");
    fake::respond(system().requests.back(), 200, "application/json",
                  "{\"seq\":3,\"presenting\":true,\"aspect\":0.75,\"overlayV\":-1,\"events\":["
                  "{\"t\":\"begin\",\"id\":1,\"x\":0.1,\"y\":0.1},"
                  "{\"t\":\"pt\",\"id\":1,\"x\":0.2,\"y\":0.2},"
                  "{\"t\":\"laser\",\"x\":0.5,\"y\":0.5}]}");
    fake::settle();
    EXPECT_TRUE(said("window style 0 backing 2 defer 0"));
    ASSERT_EQ(system().windows.size(), 1U);
    NSWindow* window = system().windows[0];
    EXPECT_EQ(window.level, 1000);
    EXPECT_EQ(window.collectionBehavior, 337U);
    EXPECT_FALSE(window.opaque);
    EXPECT_FALSE(window.hasShadow);
    EXPECT_TRUE(window.ignoresMouseEvents);
    EXPECT_EQ(window.backgroundColor, [NSColor clearColor]);
    EXPECT_TRUE(((NSView*)window.contentView).flipped);
    EXPECT_TRUE(said("front"));
    EXPECT_TRUE(said("to the screen"));
    EXPECT_EQ(fake::markAt(32, 24), 1U);  // a tenth from the left and from the top
    EXPECT_EQ(fake::markAt(64, 48), 1U);
    EXPECT_EQ(fake::markAt(160, 120), 2U);  // the laser's dot
    EXPECT_EQ(fake::markAt(32, 216), 0U);
  });
}

TEST_F(MacProgram, StopsExceptionsAtTheEdge) {
  run([&] {
    NSMenu* menu = system().statusItem.menu;
    [menu.delegate menuNeedsUpdate:menu];
    NSMenuItem* item = system().items.back();
    item.tag = 1000;  // there is no such item: at() throws
    fake::choose(item);
    EXPECT_TRUE(said("NSLog Torvane P2P Helper: %s"));
  });
}

TEST_F(MacProgram, TogglesLaunchAtLoginAndTellsWhyItCannot) {
  run([&] {
    const auto toggle = [] {
      NSMenu* menu = system().statusItem.menu;
      [menu.delegate menuNeedsUpdate:menu];
      for (NSMenuItem* item : system().items) {
        if (fake::title(item) != "Launch at Login") continue;
        const bool isOn = item.state == NSControlStateValueOn;
        fake::choose(item);
        return isOn;
      }
      ADD_FAILURE() << "no such item";
      return false;
    };
    EXPECT_FALSE(toggle());
    EXPECT_EQ(lastLine(), "register");
    system().loginStatus = SMAppServiceStatusEnabled;
    EXPECT_TRUE(toggle());
    EXPECT_EQ(lastLine(), "unregister");

    system().loginStatus = SMAppServiceStatusRequiresApproval;
    system().loginFails = true;
    std::string told;
    system().onAlert = [&](const fake::Alert& alert) {
      told = alert.informativeText;
      return 1000;
    };
    EXPECT_FALSE(toggle());
    EXPECT_EQ(told, "Couldn't change Launch at Login: Not today.");
  });
}

TEST_F(MacProgram, EndsAnotherCopyThatRuns) {
  system().info["CFBundleIdentifier"] = @"app.torvane.p2p-helper";
  const int gone = 0x7ffffffe;  // no process has this number
  system().runningApplications = {{gone, "/Users/me/Downloads/Torvane P2P Helper.app"},
                                  {4711, "/Applications/Torvane P2P Helper.app"}};
  run([&] {
    EXPECT_TRUE(said("force " + std::to_string(gone)));
    EXPECT_FALSE(said("force 4711"));
  });
}

}  // namespace
}  // namespace torvane
