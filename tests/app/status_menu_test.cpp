#include "app/status_menu.h"

#include "fakes/helper_test.h"

namespace torvane {
namespace {

// A menu as one reads it: a line for each item, indented, "[x]" behind a checked one, informational
// ones in parentheses.
std::vector<std::string> read(const std::vector<MenuItem>& menu) {
  std::vector<std::string> lines;
  for (const auto& item : menu) {
    std::string line = item.isSeparator ? "-" : item.title;
    if (!item.isSeparator && !item.action) line = "(" + line + ")";
    if (item.isChecked) line += " [x]";
    lines.push_back(std::string(2 * static_cast<std::size_t>(item.indentationLevel), ' ') + line);
  }
  return lines;
}

using Lines = std::vector<std::string>;

class StatusMenuValue : public testing::Test {
 protected:
  StatusMenuValue() {
    inputs.displayName = "Lectern";
    inputs.serverRunning = true;
    inputs.hasFullDiskAccess = true;
  }

  StatusMenuInputs inputs;
  Lines called;
  StatusMenuActions actions{
      .startServer = logging("startServer"),
      .stopServer = logging("stopServer"),
      .forgetPairedDevices = logging("forgetPairedDevices"),
      .installUpdate = logging("installUpdate"),
      .checkForUpdatesClicked = logging("checkForUpdatesClicked"),
      .offerFullDiskAccess = logging("offerFullDiskAccess"),
      .showHowItWorks = logging("showHowItWorks"),
      .toggleLaunchAtLogin = logging("toggleLaunchAtLogin"),
      .quit = logging("quit"),
  };

  std::function<void()> logging(const char* name) {
    return [this, name] { called.emplace_back(name); };
  }
  Lines lines() { return read(statusMenu(kMacTexts, inputs, actions)); }
  bool shows(const std::string& line) {
    const auto all = lines();
    return std::count(all.begin(), all.end(), line) == 1;
  }
  // What the entry of this title calls.
  std::string choose(const std::string& title) {
    for (const auto& item : statusMenu(kMacTexts, inputs, actions)) {
      if (item.title == title && item.action) item.action();
    }
    return called.empty() ? "" : called.back();
  }
};

TEST_F(StatusMenuValue, WaitsForTheFirstDevice) {
  EXPECT_EQ(lines(), (Lines{"(Advertising as “Lectern” — open the iPad app)", "-",
                            "(PowerPoint server running on port 8484)", "Stop Server", "-",
                            "How Does This Work?", "Launch at Login", "Quit"}));
}

TEST_F(StatusMenuValue, ShowsEveryEntryInItsOrder) {
  inputs = {.advertiseError = {},
            .addresses = {"192.0.2.7:48484"},
            .connectedPeers = {"Zoe's iPad", "Ann's iPad"},
            .displayName = "Lectern",
            .serverRunning = false,
            .pairedNames = {"Zoe's iPad", "Ann's iPad"},
            .availableUpdate = "413",
            .isInstalledCopy = true,
            .hasFullDiskAccess = false,
            .launchesAtLogin = true};
  EXPECT_EQ(lines(),
            (Lines{"(Connected:)", "  (Zoe's iPad)", "  (Ann's iPad)", "-",
                   "(PowerPoint server not running)", "Start Server", "-", "(Paired devices:)",
                   "  (Ann's iPad)", "  (Zoe's iPad)", "Forget Paired Devices…", "-",
                   "Update Helper to Build 413…", "Stop File-Access Prompts…",
                   "How Does This Work?", "Launch at Login [x]", "Quit"}));
}

TEST_F(StatusMenuValue, AdvertisingErrorHidesTheConnectedDevices) {
  inputs.advertiseError = "no network";
  inputs.connectedPeers = {"Ann's iPad"};
  EXPECT_EQ(lines()[0], "(Not advertising: no network)");
  EXPECT_EQ(lines()[1], "-");
  EXPECT_FALSE(shows("(Connected:)"));
}

TEST_F(StatusMenuValue, ShowsByWhatAddressToConnectWhileNobodyDoes) {
  inputs.addresses = {"192.0.2.7:48484"};
  EXPECT_EQ(lines()[1], "(Connect by address: 192.0.2.7:48484)");
  EXPECT_EQ(lines()[2], "-");
  inputs.addresses.push_back("[2001:db8::7]:48484");
  const auto all = lines();
  EXPECT_EQ(
      Lines(all.begin() + 1, all.begin() + 5),
      (Lines{"(Connect by address:)", "  (192.0.2.7:48484)", "  ([2001:db8::7]:48484)", "-"}));
  inputs.connectedPeers = {"Ann's iPad"};
  EXPECT_FALSE(shows("(Connect by address:)"));
}

TEST_F(StatusMenuValue, AnAdvertisingErrorLeavesTheAddress) {
  inputs.advertiseError = "no discovery";
  inputs.addresses = {"192.0.2.7:48484"};
  EXPECT_EQ(lines()[0], "(Not advertising: no discovery)");
  EXPECT_EQ(lines()[1], "(Connect by address: 192.0.2.7:48484)");
}

TEST_F(StatusMenuValue, TellsWhyInkHasHardEdgesBelowTheLink) {
  const auto usual = lines();
  inputs.hasInkHardEdges = true;
  auto expected = usual;
  expected.insert(expected.begin() + 1, "(Ink has hard edges: this desktop has no compositor)");
  EXPECT_EQ(lines(), expected);
  inputs.connectedPeers = {"Ann's iPad", "Zoe's iPad"};
  EXPECT_EQ(lines()[3], "(Ink has hard edges: this desktop has no compositor)");
}

TEST_F(StatusMenuValue, WithoutPairedDevicesTheUpdateFollowsTheSecondSeparator) {
  inputs.availableUpdate = "413";
  EXPECT_EQ(lines()[4], "-");
  EXPECT_EQ(lines()[5], "Update Helper to Build 413…");
}

TEST_F(StatusMenuValue, SortsPairedNamesAndKeepsEqualOnes) {
  inputs.pairedNames = {"b", "iPad", "B", "iPad", "Ä"};
  const auto all = lines();
  EXPECT_EQ(Lines(all.begin() + 5, all.begin() + 12),
            (Lines{"(Paired devices:)", "  (B)", "  (b)", "  (iPad)", "  (iPad)", "  (Ä)",
                   "Forget Paired Devices…"}));
}

TEST_F(StatusMenuValue, UpdateInProgressShowsUpdatingWithoutAnAction) {
  inputs.availableUpdate = "413";
  inputs.updateInProgress = true;
  inputs.isInstalledCopy = true;
  EXPECT_TRUE(shows("(Updating…)"));
  EXPECT_FALSE(shows("Update Helper to Build 413…"));
  EXPECT_FALSE(shows("Check for Updates"));
}

TEST_F(StatusMenuValue, InstalledCopyOffersTheUpdateCheck) {
  inputs.isInstalledCopy = true;
  EXPECT_TRUE(shows("Check for Updates"));
}

TEST_F(StatusMenuValue, CopyFromElsewhereWithoutAnUpdateShowsNoUpdateEntry) {
  for (const auto& line : lines()) {
    EXPECT_EQ(line.find("Updat"), std::string::npos) << line;
  }
}

TEST_F(StatusMenuValue, CopyFromElsewhereOffersAKnownUpdate) {
  inputs.availableUpdate = "413";
  EXPECT_TRUE(shows("Update Helper to Build 413…"));
}

TEST_F(StatusMenuValue, FullDiskAccessHidesItsOffer) {
  EXPECT_FALSE(shows("Stop File-Access Prompts…"));
  inputs.hasFullDiskAccess = false;
  EXPECT_TRUE(shows("Stop File-Access Prompts…"));
}

TEST_F(StatusMenuValue, NamesAreShownAsTheyAre) {
  inputs.connectedPeers = {"R&D_iPad <b>&amp;</b>", ""};
  EXPECT_EQ(lines()[1], "  (R&D_iPad <b>&amp;</b>)");
  EXPECT_EQ(lines()[2], "  ()");
}

TEST_F(StatusMenuValue, EveryCommandCallsItsAction) {
  inputs.pairedNames = {"iPad"};
  inputs.hasFullDiskAccess = false;
  inputs.isInstalledCopy = true;
  EXPECT_EQ(choose("Stop Server"), "stopServer");
  EXPECT_EQ(choose("Forget Paired Devices…"), "forgetPairedDevices");
  EXPECT_EQ(choose("Check for Updates"), "checkForUpdatesClicked");
  EXPECT_EQ(choose("Stop File-Access Prompts…"), "offerFullDiskAccess");
  EXPECT_EQ(choose("How Does This Work?"), "showHowItWorks");
  EXPECT_EQ(choose("Launch at Login"), "toggleLaunchAtLogin");
  EXPECT_EQ(choose("Quit"), "quit");
  inputs.serverRunning = false;
  inputs.availableUpdate = "413";
  EXPECT_EQ(choose("Start Server"), "startServer");
  EXPECT_EQ(choose("Update Helper to Build 413…"), "installUpdate");
}

class StatusMenu : public HelperTest {
 protected:
  Lines lines() { return read(platform.statusBar.shown.menu->menuNeedsUpdate()); }
};

TEST_F(StatusMenu, FollowsTheState) {
  launch();
  EXPECT_EQ(lines(), (Lines{"(Advertising as “Lectern” — open the iPad app)", "-",
                            "(PowerPoint server not running)", "Start Server", "-",
                            "How Does This Work?", "Launch at Login", "Quit"}));
  platform.runEngine();
  platform.time.advance(3);
  const auto peer = platform.peerLink.newPeer("Ann");
  invite(peer, 1);
  connect(peer);
  platform.bundle.bundlePath = "/Applications/Torvane P2P Helper.app";
  platform.privacyDatabase.isReadable = false;
  platform.loginItem.now = LoginItemStatus::enabled;
  EXPECT_EQ(lines(),
            (Lines{"(Connected:)", "  (Ann)", "-", "(PowerPoint server running on port 8484)",
                   "Stop Server", "-", "(Paired devices:)", "  (Ann)", "Forget Paired Devices…",
                   "-", "Check for Updates", "Stop File-Access Prompts…", "How Does This Work?",
                   "Launch at Login [x]", "Quit"}));
}

TEST_F(StatusMenu, AdvertisingErrorStaysFirstWhileAnIPadIsConnected) {
  launch();
  const auto peer = platform.peerLink.newPeer("Ann");
  invite(peer, 1);
  connect(peer);
  platform.peerLink.failAdvertising("no network");
  platform.time.runDue();
  EXPECT_EQ(lines()[0], "(Not advertising: no network)");
  EXPECT_EQ(lines()[1], "-");
}

TEST_F(StatusMenu, ShowsAnUpdateThatIsOfferedOrUnderWay) {
  platform.bundle.bundlePath = "/Applications/Torvane P2P Helper.app";
  platform.http.server = [](const HttpRequest& request) {
    const bool isVersion = request.url.find("/version.txt") != std::string::npos;
    return FakeAnswer{httpResult(isVersion ? 200 : 404, "413"), isVersion ? 0.0 : 30};
  };
  launch();
  platform.time.advance(5);
  EXPECT_EQ(lines()[5], "Update Helper to Build 413…");
  choose("Update Helper to Build 413…");
  EXPECT_EQ(lines()[5], "(Updating…)");
}

TEST_F(StatusMenu, OnlyTheApplicationsFolderHoldsInstalledCopies) {
  launch();
  for (const char* path : {"/opt/torvane/Torvane P2P Helper.app", "/Applications.old/T.app",
                           "/home/presenter/Applications/T.app"}) {
    platform.bundle.bundlePath = path;
    EXPECT_EQ(lines()[5], "How Does This Work?") << path;
  }
  platform.bundle.bundlePath = "/Applications/Folder/T.app";
  EXPECT_EQ(lines()[5], "Check for Updates");
}

TEST_F(StatusMenu, CheckMarkIsOnOnlyWhenTheLoginItemIsEnabled) {
  launch();
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::requiresApproval,
                            LoginItemStatus::notFound}) {
    platform.loginItem.now = status;
    EXPECT_EQ(lines()[6], "Launch at Login");
  }
  platform.loginItem.now = LoginItemStatus::enabled;
  EXPECT_EQ(lines()[6], "Launch at Login [x]");
}

TEST_F(StatusMenu, StartsAndStopsTheEngine) {
  launch();
  choose("Start Server");
  const auto engines =
      platform.processes.launchesWith(*platform.bundle.pathForResource("torvane", "py"));
  ASSERT_EQ(engines.size(), 1U);
  platform.runEngine();
  platform.time.advance(3);
  choose("Stop Server");
  EXPECT_EQ(platform.http.requestsTo("/api/shutdown").size(), 1U);
  engines[0].process->exit(1);  // nobody is told: it was to end
  platform.time.advance(1);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(StatusMenu, OpensTheDialogs) {
  platform.privacyDatabase.isReadable = false;
  remember({{deviceKey(1), "Ann"}});
  launch();
  for (const char* title :
       {"Forget Paired Devices…", "Stop File-Access Prompts…", "How Does This Work?"}) {
    choose(title);
  }
  ASSERT_EQ(platform.alerts.shown.size(), 3U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Forget all paired devices?");
  EXPECT_EQ(platform.alerts.shown[1].message, "Stop the file-access prompts");
  EXPECT_EQ(platform.alerts.shown[2].message, "How Torvane works");
}

TEST_F(StatusMenu, ShowsTheAddressesOfNow) {
  launch();
  platform.peerLink.ownAddresses = {"192.0.2.7:48484"};
  EXPECT_EQ(lines()[1], "(Connect by address: 192.0.2.7:48484)");
  platform.peerLink.ownAddresses = {"198.51.100.4:48484"};
  EXPECT_EQ(lines()[1], "(Connect by address: 198.51.100.4:48484)");
  platform.peerLink.ownAddresses.clear();
  EXPECT_EQ(lines()[1], "-");
}

TEST_F(StatusMenu, TogglesLaunchAtLogin) {
  launch();
  choose("Launch at Login");
  EXPECT_EQ(lines()[6], "Launch at Login [x]");
  choose("Launch at Login");
  EXPECT_EQ(lines()[6], "Launch at Login");
}

TEST_F(StatusMenu, Quits) {
  launch();
  platform.log.clear();
  choose("Quit");
  EXPECT_EQ(platform.log, CallLog{"terminate"});
}

}  // namespace
}  // namespace torvane
