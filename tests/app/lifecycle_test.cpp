#include "fakes/helper_test.h"

namespace torvane {
namespace {

class Lifecycle : public HelperTest {
 protected:
  // Whether a launch welcomes the user though this is stored as "didShowWelcome".
  bool isWelcomedWith(const JsonValue& stored) {
    platform.defaults.stored["didShowWelcome"] = stored;
    platform.alerts.shown.clear();
    launch();
    const auto& shown = platform.alerts.shown;
    return std::any_of(shown.begin(), shown.end(), [](const AlertContent& alert) {
      return alert.message == "Welcome to Torvane P2P Helper";
    });
  }
};

TEST_F(Lifecycle, StartsWithEveryFieldAtItsInitialValue) {
  const auto& fresh = construct();
  EXPECT_EQ(fresh.statusItem, nullptr);
  EXPECT_EQ(fresh.child, nullptr);
  EXPECT_FALSE(fresh.serverRunning);
  EXPECT_FALSE(fresh.stoppingServer);
  EXPECT_TRUE(fresh.connectedPeers.empty());
  EXPECT_FALSE(fresh.advertiseError.has_value());
  EXPECT_EQ(fresh.inkSeq, 0);
  EXPECT_FALSE(fresh.inkBusy);
  EXPECT_EQ(fresh.frameTick, 0);
  EXPECT_EQ(fresh.lastOverlayV, -1);
  EXPECT_EQ(fresh.peerID.displayName, "Lectern");
  EXPECT_EQ(fresh.session, nullptr);
  EXPECT_EQ(fresh.advertiser, nullptr);
  EXPECT_TRUE(fresh.pairedDevices.empty());
  EXPECT_TRUE(fresh.peerKeys.empty() && fresh.challenges.empty() && fresh.receivedIDs.empty());
  EXPECT_TRUE(fresh.inviteNames.empty() && fresh.ignoredDevices.empty());
  EXPECT_TRUE(fresh.warnedLegacyClients.empty() && fresh.pendingInvites.empty());
  EXPECT_FALSE(fresh.pairingAlertUp);
  EXPECT_EQ(fresh.http, nullptr);
  EXPECT_FALSE(fresh.availableUpdate.has_value());
  EXPECT_FALSE(fresh.updateInProgress);
  EXPECT_EQ(fresh.overlayView.aspect, 0.5625);
}

TEST_F(Lifecycle, LaunchesInOrder) {
  platform.defaults.stored.clear();
  construct().applicationDidFinishLaunching();
  const CallLog expected = {"make status item",
                            "set icon",
                            "set menu",
                            "make session",
                            "make advertiser",
                            "start advertising",
                            "store didShowWelcome",
                            "activate",
                            "alert Welcome to Torvane P2P Helper",
                            "prompt for accessibility"};
  EXPECT_EQ(platform.log, expected);
}

TEST_F(Lifecycle, RetiresCopiesFirstAndResetsPermissionsBetweenWelcomeAndPrompt) {
  platform.defaults.stored.clear();
  platform.accessibility.isGranted = false;
  platform.files.put(*platform.bundle.executable, "a program");
  platform.files.folders.insert("/Applications/Torvane P2P.app");
  platform.runningApplications.running["org.example.helper"] = {{99, "/Applications/T.app"}};
  platform.processes.program = [](const ProcessLaunch&) { return FakeProgram{"", 0, ""}; };
  construct().applicationDidFinishLaunching();
  const CallLog expected = {"force terminate 99",      "trash /Applications/Torvane P2P.app",
                            "make status item",        "alert Welcome to Torvane P2P Helper",
                            "store tccResetForBinary", "prompt for accessibility"};
  EXPECT_EQ(platform.logged(expected), expected);
  EXPECT_EQ(platform.log.front(), expected.front());
}

TEST_F(Lifecycle, SchedulesItsTimersAndDeferredCalls) {
  launch();
  EXPECT_EQ(platform.mainQueue.repeating, (std::vector<double>{3.0, 0.08, 43200}));
  EXPECT_EQ(platform.mainQueue.once, (std::vector<double>{5.0, 1.5}));
}

TEST_F(Lifecycle, ProbesTheEngineOnceAtLaunchAndThenEveryThreeSeconds) {
  launch();
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 1U);
  platform.runEngine();
  platform.time.advance(3.0);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 3U);  // one more after the start
  platform.time.advance(30.0);
  EXPECT_EQ(platform.http.requestsTo("/api/state").size(), 13U);
}

TEST_F(Lifecycle, StartsTheEngineAfterOneAndAHalfSeconds) {
  launch();
  platform.time.advance(1.4);
  EXPECT_EQ(helper->child, nullptr);
  platform.time.advance(0.2);
  EXPECT_NE(helper->child, nullptr);
}

TEST_F(Lifecycle, KeepsAnEngineThatAnswersAlready) {
  platform.runEngine();
  launch();
  platform.time.advance(10);
  EXPECT_TRUE(helper->serverRunning);
  EXPECT_TRUE(platform.processes.launched.empty());
}

TEST_F(Lifecycle, TakesAFlagAsItsUserWroteIt) {
  for (const JsonValue& yes :
       {JsonValue(true), JsonValue(1), JsonValue(-1), JsonValue(0.5), JsonValue(UINT64_MAX),
        JsonValue("YES"), JsonValue("yes"), JsonValue("TRUE"), JsonValue("true"), JsonValue("1"),
        JsonValue("Y"), JsonValue(" \t+007 "), JsonValue("-9")}) {
    EXPECT_FALSE(isWelcomedWith(yes)) << yes;
  }
  for (const JsonValue& no : {JsonValue(false), JsonValue(0), JsonValue(0.0), JsonValue("NO"),
                              JsonValue("false"), JsonValue("0"), JsonValue("000"), JsonValue(""),
                              JsonValue(" "), JsonValue("on"), JsonValue("+-1"), JsonValue(nullptr),
                              JsonValue(JsonArray{1}), JsonValue(JsonObject{{"YES", 1}})}) {
    EXPECT_TRUE(isWelcomedWith(no)) << no;
  }
}

TEST_F(Lifecycle, WelcomesOnTheFirstLaunchAndStoresThatFirst) {
  platform.defaults.stored.clear();
  platform.alerts.whileUp = [this](const AlertContent&) {
    EXPECT_EQ(platform.defaults.stored["didShowWelcome"], JsonValue(true));
  };
  launch();
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  const auto& welcome = platform.alerts.shown[0];
  EXPECT_EQ(welcome.message, "Welcome to Torvane P2P Helper");
  EXPECT_EQ(welcome.informativeText,
            "Your iPad can control PowerPoint on this Mac — no shared Wi‑Fi needed.\n\nmacOS will "
            "now ask for a few permissions. Please approve each one:\n\n•  Accessibility — makes "
            "slide jumps instant\n•  Local Network — lets the iPad find this Mac\n•  “Control "
            "PowerPoint” — appears the first time the iPad connects\n\nThen open your presentation "
            "in PowerPoint, open Torvane on the iPad, and you're set. This app lives in the menu "
            "bar — look for the radio‑waves icon at the top right of the screen.");
  EXPECT_EQ(welcome.buttons.size(), 1U);
}

TEST_F(Lifecycle, WelcomesOnlyOnce) {
  launch();
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Lifecycle, FirstLaunchNeverOffersFullDiskAccess) {
  platform.defaults.stored.clear();
  platform.privacyDatabase.isReadable = false;
  launch();
  EXPECT_EQ(platform.defaults.stored.count("fdaNudgeShown"), 0U);
  EXPECT_EQ(platform.mainQueue.once, (std::vector<double>{5.0, 1.5}));
}

TEST_F(Lifecycle, SecondLaunchOffersFullDiskAccessAfterTwoSeconds) {
  platform.privacyDatabase.isReadable = false;
  launch();
  EXPECT_EQ(platform.defaults.stored["fdaNudgeShown"], JsonValue(true));
  EXPECT_EQ(platform.mainQueue.once, (std::vector<double>{5.0, 1.5, 2.0}));
  EXPECT_EQ(
      platform.privacyDatabase.asked,
      std::vector<std::string>{"/home/presenter/Library/Application Support/com.apple.TCC/TCC.db"});
}

TEST_F(Lifecycle, ThirdLaunchDoesNotOfferFullDiskAccessAgain) {
  platform.privacyDatabase.isReadable = false;
  platform.defaults.stored["fdaNudgeShown"] = true;
  launch();
  EXPECT_EQ(platform.mainQueue.once, (std::vector<double>{5.0, 1.5}));
}

TEST_F(Lifecycle, GrantedFullDiskAccessStoresNothing) {
  launch();
  EXPECT_EQ(platform.defaults.stored.count("fdaNudgeShown"), 0U);
}

TEST_F(Lifecycle, HostWithoutANameAdvertisesAsMac) {
  platform.processInfo.name = std::nullopt;
  launch();
  EXPECT_EQ(helper->peerID.displayName, "Mac");
  EXPECT_EQ(platform.peerLink.ownName, "Mac");
  EXPECT_EQ(platform.peerLink.advertisedType, "torvane");
}

TEST_F(Lifecycle, QuittingWithoutAnOwnEngineTouchesNoEngine) {
  platform.runEngine();
  launch();
  platform.log.clear();
  helper->applicationWillTerminate();
  EXPECT_EQ(platform.log, (CallLog{"stop advertising", "disconnect"}));
  EXPECT_TRUE(platform.http.requestsTo("/api/shutdown").empty());
  EXPECT_EQ(platform.mainQueue.blockedFor, 0);
}

TEST_F(Lifecycle, QuittingEndsItsOwnEngine) {
  launch();
  platform.time.advance(2);
  const auto engine = platform.processes.launched.back().process;
  platform.log.clear();
  helper->applicationWillTerminate();
  EXPECT_EQ(platform.log, (CallLog{"stop advertising", "disconnect", "block 0.3"}));
  EXPECT_TRUE(helper->stoppingServer);
  EXPECT_EQ(platform.http.requestsTo("/api/shutdown").size(), 1U);
  EXPECT_EQ(engine->terminations, 1);
  platform.time.advance(1);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(Lifecycle, QuittingAsksTheEngineBeforeItIsEnded) {
  launch();
  platform.time.advance(2);
  std::size_t askedBefore = 0;
  platform.processes.launched.back().process->onTerminate = [&] {
    askedBefore = platform.http.requestsTo("/api/shutdown").size();
  };
  helper->applicationWillTerminate();
  EXPECT_EQ(platform.processes.launched.back().process->terminations, 1);
  EXPECT_EQ(askedBefore, 1U);
}

TEST_F(Lifecycle, QuitAsksTheApplicationToTerminate) {
  launch();
  platform.log.clear();
  helper->quit();
  EXPECT_EQ(platform.log, CallLog{"terminate"});
}

TEST_F(Lifecycle, GoesOnWithoutAPlaceForTheIcon) {
  platform.statusBar.hasPlace = false;
  launch();
  EXPECT_EQ(helper->statusItem, nullptr);
  EXPECT_NE(helper->session, nullptr);
}

TEST_F(Lifecycle, DropsWorkThatIsDueAfterTheHelperHasGone) {
  launch();
  helper->checkStatus();
  const auto requests = platform.http.requests.size();
  helper.reset();
  platform.time.advance(100);
  EXPECT_EQ(platform.http.requests.size(), requests);
}

}  // namespace
}  // namespace torvane
