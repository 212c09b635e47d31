#include "fakes/helper_test.h"

namespace torvane {
namespace {

class Dialogs : public HelperTest {
 protected:
  static constexpr int kLater = kAlertFirstButton + 1;
  static constexpr const char* kStopPrompts = "Stop File-Access Prompts…";

  void SetUp() override {
    launch();
    platform.log.clear();
  }
  const AlertContent& shown() { return platform.alerts.shown.back(); }
  bool menuOffersFullDiskAccess() {
    const auto titles = menuTitles();
    return std::count(titles.begin(), titles.end(), kStopPrompts) == 1;
  }
  void chooseFullDiskAccess() {
    platform.privacyDatabase.isReadable = false;
    choose(kStopPrompts);
  }
};

TEST_F(Dialogs, AlertStandsUnderTheProgramsNameWithOneButton) {
  platform.loginItem.failure = "Something <b>happened</b>.";
  choose("Launch at Login");
  const AlertContent expected = {
      .message = "Torvane P2P Helper",
      .informativeText = "Couldn't change Launch at Login: Something <b>happened</b>.",
      .buttons = {"OK"}};
  EXPECT_EQ(shown(), expected);
  EXPECT_EQ(platform.log, CallLog{"alert Torvane P2P Helper"});  // and does not come to the front
}

TEST_F(Dialogs, ExplainsHowItWorks) {
  choose("How Does This Work?");
  EXPECT_EQ(platform.log, (CallLog{"activate", "alert How Torvane works"}));
  EXPECT_EQ(
      shown().informativeText,
      "This menu bar app is the Mac half of Torvane. It does two jobs:\n\n•  It runs a small local "
      "server that drives Microsoft PowerPoint — changing slides, exporting slide pictures, and "
      "reading your speaker notes.\n\n•  It announces itself to nearby iPads the same way AirDrop "
      "does (Bluetooth and direct Wi‑Fi), so the iPad app finds this Mac by itself — no shared "
      "network, no cables, no addresses to type.\n\nOn the iPad you see the current slide, your "
      "notes, and a tappable grid of every slide for jumping around. A drag with the laser tool "
      "shows as a red dot on the projector, and anything you draw with the Apple Pencil appears "
      "live over the presentation — and can be exported afterwards as an annotated PDF.\n\nThe "
      "first time a new iPad connects, this Mac asks you to approve it, so nobody else in the room "
      "can take over your presentation. Everything stays between your devices; nothing goes "
      "through the internet.\n\nTip: tap the ? button at the top of the iPad app for a guide to "
      "every control.");
  EXPECT_EQ(shown().buttons.size(), 1U);
}

TEST_F(Dialogs, OffersFullDiskAccess) {
  chooseFullDiskAccess();
  const AlertContent expected = {
      .message = "Stop the file-access prompts",
      .informativeText =
          "macOS asks permission each time this helper reads the slide previews PowerPoint "
          "exports, and again when it saves annotated PDFs to Downloads. Granting Full Disk Access "
          "once stops all of those prompts.\n\nIn System Settings › Privacy & Security › Full Disk "
          "Access, click +, choose “Torvane P2P Helper” in Applications, and turn it on. If macOS "
          "then offers to relaunch the helper, let it.",
      .buttons = {"Open System Settings", "Later"}};
  EXPECT_EQ(shown(), expected);
  EXPECT_EQ(platform.log, (CallLog{"activate", "alert Stop the file-access prompts"}));
}

TEST_F(Dialogs, FirstButtonOpensTheFullDiskAccessSettings) {
  chooseFullDiskAccess();
  EXPECT_EQ(platform.workspace.opened,
            std::vector<std::string>{
                "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"});
}

TEST_F(Dialogs, LaterChangesNothingAndTheMenuKeepsOffering) {
  const auto before = platform.defaults.stored;
  platform.alerts.answers = {kLater};
  chooseFullDiskAccess();
  EXPECT_TRUE(platform.workspace.opened.empty());
  EXPECT_EQ(platform.defaults.stored, before);
  EXPECT_TRUE(menuOffersFullDiskAccess());
}

TEST_F(Dialogs, OfferComesOnceWhileTheMenuKeepsOffering) {
  platform.privacyDatabase.isReadable = false;
  platform.alerts.answers = {kLater};
  launch();
  platform.time.advance(1.9);
  EXPECT_TRUE(platform.alerts.shown.empty());
  platform.time.advance(0.2);
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(shown().message, "Stop the file-access prompts");
  for (int launches = 0; launches < 3; ++launches) {
    launch();
    platform.time.advance(10);
    EXPECT_TRUE(menuOffersFullDiskAccess());
  }
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
}

TEST_F(Dialogs, MenuStopsOfferingOnceTheDatabaseCanBeRead) {
  platform.privacyDatabase.isReadable = false;
  EXPECT_TRUE(menuOffersFullDiskAccess());
  platform.privacyDatabase.isReadable = true;
  EXPECT_FALSE(menuOffersFullDiskAccess());
}

TEST_F(Dialogs, AnyLoginItemThatIsNotEnabledIsRegistered) {
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval,
                            LoginItemStatus::notFound}) {
    platform.loginItem.now = status;
    platform.loginItem.calls.clear();
    choose("Launch at Login");
    EXPECT_EQ(platform.loginItem.calls, std::vector<std::string>{"register"});
    EXPECT_EQ(platform.loginItem.now, LoginItemStatus::enabled);
  }
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Dialogs, EnabledLoginItemIsUnregistered) {
  platform.loginItem.now = LoginItemStatus::enabled;
  choose("Launch at Login");
  EXPECT_EQ(platform.loginItem.calls, std::vector<std::string>{"unregister"});
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Dialogs, FailedLoginItemChangeIsReported) {
  platform.loginItem.failure = "The folder cannot be written to.";
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::enabled}) {
    platform.loginItem.now = status;
    choose("Launch at Login");
    EXPECT_EQ(shown().message, "Torvane P2P Helper");
    EXPECT_EQ(shown().informativeText,
              "Couldn't change Launch at Login: The folder cannot be written to.");
    EXPECT_EQ(platform.loginItem.now, status);
  }
}

TEST_F(Dialogs, LaunchLeavesTheLoginItemAlone) {
  EXPECT_TRUE(platform.loginItem.calls.empty());
}

}  // namespace
}  // namespace torvane
