// What is between an alert and whoever answers it.

#include "mac/mac_program.h"

namespace torvane {
namespace {

using fake::lets;

class MacAlertsTest : public MacProgram {
 protected:
  static constexpr NSEventType kClick = static_cast<NSEventType>(1);

  // A stranger asks; `whileUp` runs with the question's window once it is on the screen.
  void ask(const std::function<void(NSWindow*)>& whileUp) {
    run([&] {
      bool wasAsked = false;
      system().onAlert = [&](const fake::Alert& alert) {
        if (alert.message != "Pair with “Zoë's iPad”?") return 1000;  // of the engine
        wasAsked = true;
        fake::settle();
        whileUp(alert.window);
        return 1001;
      };
      const auto answer = invite(pad(), device_);
      fake::settle();
      EXPECT_TRUE(wasAsked);
      EXPECT_EQ(*answer, "no");
      EXPECT_TRUE(lets(kClick, nil));
      EXPECT_EQ(system().monitor, nullptr);
    });
  }
};

TEST_F(MacAlertsTest, QuestionTakesNoKeyAndNoClickInItsFirstSecond) {
  ask([](NSWindow* window) {
    for (const double wait : {0.0, 0.5, 0.45}) {
      fake::advance(wait);
      EXPECT_FALSE(lets(NSEventTypeKeyDown, window));
      EXPECT_FALSE(lets(NSEventTypeKeyUp, window));
      EXPECT_FALSE(lets(kClick, window));
    }
    fake::advance(0.2);
    EXPECT_TRUE(lets(NSEventTypeKeyDown, window));
    EXPECT_FALSE(lets(NSEventTypeKeyDown, window, true));
    EXPECT_TRUE(lets(kClick, window));
    EXPECT_FALSE(said("wrong question"));
  });
}

TEST_F(MacAlertsTest, QuestionTakesNothingWhileAKeyOrButtonIsHeld) {
  system().heldKeys = {49};
  ask([](NSWindow* window) {
    fake::advance(20);
    EXPECT_FALSE(lets(NSEventTypeKeyDown, window));
    EXPECT_FALSE(lets(kClick, window));
    system().heldKeys = {};
    system().heldButtons = 1;
    fake::advance(1);
    EXPECT_FALSE(lets(kClick, window));
    system().heldButtons = 0;
    fake::advance(0.1);
    EXPECT_TRUE(lets(NSEventTypeKeyDown, window));
    EXPECT_TRUE(lets(kClick, window));
  });
}

TEST_F(MacAlertsTest, CapsLockIsNoKeyThatIsHeld) {
  system().heldKeys = {57};
  ask([](NSWindow* window) {
    fake::advance(1.2);
    EXPECT_TRUE(lets(NSEventTypeKeyDown, window));
  });
}

TEST_F(MacAlertsTest, OtherWindowsKeepTheirInput) {
  ask([](NSWindow* window) {
    NSWindow* other = [[NSWindow alloc] init];
    EXPECT_FALSE(lets(kClick, window));
    EXPECT_TRUE(lets(kClick, other));
    EXPECT_TRUE(lets(kClick, nil));  // the menu bar
  });
}

TEST_F(MacAlertsTest, OtherAlertsTakeEverythingAtOnce) {
  run([&] {
    NSWindow* shown = nil;
    system().onAlert = [&](const fake::Alert& alert) {
      shown = alert.window;
      EXPECT_TRUE(lets(NSEventTypeKeyDown, alert.window));
      return 1000;
    };
    NSMenu* menu = system().statusItem.menu;
    [menu.delegate menuNeedsUpdate:menu];
    for (NSMenuItem* item : std::vector<NSMenuItem*>(system().items)) {
      if (fake::title(item) == "How Does This Work?") fake::choose(item);
    }
    EXPECT_NE(shown, nil);
  });
}

TEST_F(MacAlertsTest, QuestionIsAboveTheInkAndOverFullScreenWindows) {
  ask([](NSWindow* window) {
    EXPECT_EQ(window.level, 1001);
    EXPECT_EQ(window.collectionBehavior, 257U);
    EXPECT_EQ(window.frame.origin.x, 60);  // where the system puts it
  });
}

TEST_F(MacAlertsTest, QuestionOpensInTheMiddleOfTheScreenWithoutTheShow) {
  system().screens = {{{0, 0}, {320, 240}}, {{320, 40}, {640, 200}}};
  system().listedWindows = {{"Microsoft PowerPoint", {{0, 0}, {320, 240}}}};
  ask([](NSWindow* window) {
    EXPECT_EQ(window.frame.origin.x, 320 + (640 - 200) / 2);
    EXPECT_EQ(window.frame.origin.y, 40 + (200 - 100) / 2);
  });
}

}  // namespace
}  // namespace torvane
