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

TEST_F(Lifecycle, TouchesNothingBeforeItsLaunch) {
  construct();
  EXPECT_EQ(platform.log, CallLog());
  EXPECT_TRUE(platform.http.requests.empty() && platform.http.ephemeralTimeouts.empty());
  EXPECT_TRUE(platform.processes.launched.empty() && platform.alerts.shown.empty());
  EXPECT_TRUE(platform.mainQueue.repeating.empty() && platform.mainQueue.once.empty());
  EXPECT_EQ(platform.overlaySurfaces.shown.timesMade, 0);
}

// But for its name.
TEST_F(Lifecycle, KnowsOfNothingAtFirst) {
  platform.bundle.bundlePath = "/Applications/Torvane P2P Helper.app";
  construct();
  EXPECT_EQ(menuTitles(),
            (std::vector<std::string>{"Advertising as “Lectern” — open the iPad app", "",
                                      "PowerPoint server not running", "Start Server", "",
                                      "Check for Updates", "How Does This Work?", "Launch at Login",
                                      "Quit"}));
}

TEST_F(Lifecycle, ServesNobodyAtFirst) {
  launch();
  EXPECT_FALSE(serves(platform.peerLink.newPeer("Ann")));
  const PeerID ben = platform.peerLink.newPeer("Ben");
  const auto answers = invite(ben, 1);  // which nobody has refused, nor is another alert up
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Pair with “Ben”?");
  EXPECT_TRUE(answers->at(0).accept);
  EXPECT_TRUE(serves(ben));
}

TEST_F(Lifecycle, WarnsOfTheFirstOldDevice) {
  launch();
  platform.peerLink.invite(platform.peerLink.newPeer("Relic"), std::nullopt);
  platform.time.runDue();
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
}

TEST_F(Lifecycle, AsksForInkFromTheStartAndForThePictureWhateverItsVersion) {
  platform.http.server = [](const HttpRequest&) {
    return FakeAnswer{httpResult(200, R"({"seq":7,"events":[],"presenting":true,"overlayV":0})")};
  };
  launch();
  platform.time.advance(0.1);
  EXPECT_EQ(platform.http.requestsTo("/api/ink/events?since=0").size(), 1U);
  EXPECT_EQ(platform.http.requestsTo("/api/ink/overlay").size(), 1U);
  ASSERT_NE(platform.overlaySurfaces.shown.content, nullptr);
  EXPECT_EQ(platform.overlaySurfaces.shown.content->aspect, 0.5625);
  EXPECT_EQ(platform.windowServer.queries, 1);  // the first answer looks for the show
  platform.time.advance(23 * 0.08);
  EXPECT_EQ(platform.windowServer.queries, 1);
  platform.time.advance(0.08);  // and then the 25th
  EXPECT_EQ(platform.windowServer.queries, 2);
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
  EXPECT_TRUE(platform.processes.launched.empty());
  platform.time.advance(0.2);
  ASSERT_FALSE(platform.processes.launched.empty());
  const auto& engine = platform.processes.launched.back();
  EXPECT_EQ(engine.launch.arguments.front(), platform.bundle.pathForResource("torvane", "py"));
  EXPECT_TRUE(engine.process->isRunning());
}

TEST_F(Lifecycle, KeepsAnEngineThatAnswersAlready) {
  platform.runEngine();
  launch();
  platform.time.advance(10);
  EXPECT_FALSE(isIconDimmed());
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
  EXPECT_EQ(menuTitles()[0], "Advertising as “Mac” — open the iPad app");
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
  EXPECT_EQ(platform.http.requestsTo("/api/shutdown").size(), 1U);
  EXPECT_EQ(engine->terminations, 1);
  platform.time.advance(1);  // it was to end: nobody is told
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
  choose("Quit");
  EXPECT_EQ(platform.log, CallLog{"terminate"});
}

TEST_F(Lifecycle, GoesOnWithoutAPlaceForTheIcon) {
  platform.statusBar.hasPlace = false;
  launch();
  EXPECT_EQ(platform.logged({"make status item", "set icon", "set menu"}),
            CallLog{"make status item"});
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

TEST_F(Lifecycle, DropsWorkThatIsDueAfterTheHelperHasGone) {
  construct().applicationDidFinishLaunching();  // asks the engine; the answer is on its way
  const auto requests = platform.http.requests.size();
  helper.reset();
  platform.time.advance(100);
  EXPECT_EQ(requests, 1U);
  EXPECT_EQ(platform.http.requests.size(), requests);
}

}  // namespace
}  // namespace torvane
