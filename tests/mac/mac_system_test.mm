// The adapters that ask the system one thing and pass its answer on.

#import <AppKit/AppKit.h>

#include "mac/on_a_mac.h"
#include "platform/mac/mac_bundle.h"
#include "platform/mac/mac_code_check.h"
#include "platform/mac/mac_permissions.h"
#include "platform/mac/mac_process_info.h"
#include "platform/mac/mac_running_applications.h"
#include "platform/mac/mac_screens.h"
#include "platform/mac/mac_text.h"
#include "platform/mac/mac_user_defaults.h"
#include "platform/mac/mac_window_server.h"
#include "platform/mac/mac_workspace.h"
#include "platform/mac/property_list.h"

namespace torvane {
namespace {

using fake::said;
using fake::system;

class MacSystem : public OnAMac {};

TEST_F(MacSystem, ReadsItsBundle) {
  system().info = {
      {"CFBundleVersion", @"42"}, {"LSUIElement", @YES}, {"Odd", [[NSObject alloc] init]}};
  system().resources["torvane.py"] = "/Applications/T.app/Contents/Resources/torvane.py";
  const MacBundle bundle;
  EXPECT_EQ(bundle.path(), "/Applications/Torvane P2P Helper.app");
  EXPECT_EQ(bundle.executablePath(), std::nullopt);
  system().executable = @"/Applications/T.app/Contents/MacOS/T";
  EXPECT_EQ(bundle.executablePath(), "/Applications/T.app/Contents/MacOS/T");
  EXPECT_EQ(bundle.pathForResource("torvane", "py"), system().resources["torvane.py"]);
  EXPECT_EQ(bundle.pathForResource("torvane", "rb"), std::nullopt);
  EXPECT_EQ(bundle.infoValue("CFBundleVersion"), JsonValue("42"));
  EXPECT_EQ(bundle.infoValue("LSUIElement"), JsonValue(true));
  EXPECT_EQ(bundle.infoValue("Missing"), std::nullopt);
  EXPECT_EQ(bundle.infoValue("Odd"), std::nullopt);
}

TEST_F(MacSystem, MovesToTheTrash) {
  MacWorkspace workspace;
  EXPECT_TRUE(workspace.moveToTrash("/Applications/Torvane P2P.app"));
  EXPECT_TRUE(said("trash file:///Applications/Torvane P2P.app"));
  system().trashFails = true;
  EXPECT_FALSE(workspace.moveToTrash("/Applications/Torvane P2P.app"));
}

TEST_F(MacSystem, OpensAddressesAndNothingElse) {
  MacWorkspace workspace;
  workspace.openURL("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles");
  EXPECT_TRUE(
      said("open x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"));
  workspace.openURL("no address");
  EXPECT_EQ(system().log.size(), 1U);
}

TEST_F(MacSystem, AsksForAccessibilityWithAPromptOnly) {
  MacAccessibility accessibility;
  EXPECT_TRUE(accessibility.isTrusted());
  system().isTrusted = false;
  EXPECT_FALSE(accessibility.isTrusted());
  EXPECT_TRUE(system().log.empty());
  accessibility.promptForTrust();
  EXPECT_TRUE(said("trust with a prompt"));
}

TEST_F(MacSystem, ReadsThePrivacyDatabaseIfItMay) {
  system().readableFiles = {"/home/TCC.db"};
  const MacPrivacyDatabase database;
  EXPECT_TRUE(database.canRead("/home/TCC.db"));
  EXPECT_FALSE(database.canRead("/home/other.db"));
}

TEST_F(MacSystem, ChecksSignedCodeAllOfItAgainstARequirement) {
  system().signatures = {{"/tmp/T.app", "anchor apple"}};
  const MacCodeCheck check;
  EXPECT_TRUE(check.meets("/tmp/T.app", "anchor apple"));
  EXPECT_TRUE(said("check /tmp/T.app with 25"));  // every processor, what it holds, strictly
  EXPECT_FALSE(check.meets("/tmp/T.app", "anchor apple generic"));
}

TEST_F(MacSystem, TakesNoCodeAndNoRequirementForARefusal) {
  system().signatures = {{"/tmp/T.app", ""}};
  const MacCodeCheck check;
  EXPECT_FALSE(check.meets("/tmp/unsigned.app", "anchor apple"));
  EXPECT_FALSE(check.meets("/tmp/T.app", ""));
  EXPECT_TRUE(system().log.empty()) << "nothing was checked";
}

TEST_F(MacSystem, KnowsItsProcess) {
  system().hostName = @"";
  const MacProcessInfo info;
  EXPECT_EQ(info.hostName(), std::nullopt);
  EXPECT_EQ(info.homeDirectory(), "/nonexistent/home");
  EXPECT_EQ(info.temporaryDirectory(), "/nonexistent/temporary");
  EXPECT_EQ(info.environment().at("PATH"), "/usr/bin");
  EXPECT_EQ(info.processIdentifier(), 4711);
  system().hostName = nil;
  EXPECT_EQ(MacProcessInfo().hostName(), std::nullopt);
}

// One that has ended has the number -1, which means every process to the system's own calls.
TEST_F(MacSystem, LeavesOutApplicationsThatHaveEnded) {
  system().runningApplications = {{-1, "/Applications/A.app"}, {4711, "/Applications/B.app"}};
  const auto found = MacRunningApplications().withBundleIdentifier("app.torvane.p2p-helper");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].processIdentifier, 4711);
  EXPECT_EQ(found[0].bundlePath, "/Applications/B.app");
}

TEST_F(MacSystem, ListsWindowsWithWhatIsKnownOfThem) {
  system().windowList = @[
    @{@"owner" : @"Microsoft PowerPoint",
      @"bounds" : @{@"X" : @-5, @"Width" : @1.5}},
    @{@"owner" : @7,
      @"bounds" : @"none"},
    @{@"bounds" : @{@"X" : @"1"}},
    @{@"bounds" : @{@1 : @1}}
  ];
  const auto windows = MacWindowServer().onScreenWindows();
  ASSERT_TRUE(windows);
  ASSERT_EQ(windows->size(), 4U);
  EXPECT_EQ(windows->at(0).ownerName, "Microsoft PowerPoint");
  EXPECT_EQ(windows->at(0).bounds, (std::map<std::string, double>{{"X", -5}, {"Width", 1.5}}));
  for (std::size_t i = 1; i < 4; ++i) {
    EXPECT_FALSE(windows->at(i).ownerName);
    EXPECT_FALSE(windows->at(i).bounds);
  }
}

TEST_F(MacSystem, TellsThatThereIsNoListOfWindows) {
  system().windowList = @[ @"no window" ];
  EXPECT_FALSE(MacWindowServer().onScreenWindows());
  system().windowList = nil;
  system().listsNoWindows = true;
  EXPECT_FALSE(MacWindowServer().onScreenWindows());
}

TEST_F(MacSystem, ListsScreensOrNone) {
  system().screens = {{{0, 0}, {1920, 1080}}, {{-800, 20}, {800, 600}}};
  EXPECT_EQ(MacScreens().frames(), (std::vector<Rect>{{0, 0, 1920, 1080}, {-800, 20, 800, 600}}));
  EXPECT_EQ(MacScreens().mainFrame(), (Rect{0, 0, 1920, 1080}));
  system().screens.clear();
  EXPECT_TRUE(MacScreens().frames().empty());
  EXPECT_FALSE(MacScreens().mainFrame());
}

TEST_F(MacSystem, KeepsItsSettingsAsPropertyLists) {
  MacUserDefaults defaults;
  const JsonValue value = {{"Zoë", {1, -2.5, true, "x"}}, {"empty", JsonObject()}};
  defaults.setObject("a", value);
  EXPECT_EQ(defaults.object("a"), value);
  EXPECT_EQ(defaults.object("b"), std::nullopt);
  defaults.removeObject("a");
  EXPECT_EQ(defaults.object("a"), std::nullopt);
}

TEST_F(MacSystem, TakesNothingFromAListThatIsNotOfValues) {
  NSObject* date = [[NSObject alloc] init];
  EXPECT_EQ(fromPropertyList(date), std::nullopt);
  EXPECT_EQ(fromPropertyList(nil), std::nullopt);
  EXPECT_EQ(fromPropertyList(@[ @1, date ]), std::nullopt);
  EXPECT_EQ(fromPropertyList(@{@"a" : @{@"b" : date}}), std::nullopt);
  EXPECT_EQ(fromPropertyList(@{@1 : @"a key that is no text"}), std::nullopt);
  EXPECT_EQ(toPropertyList(nullptr), nil);
  EXPECT_EQ([toPropertyList(JsonArray{nullptr, 1}) count], 1U);
}

TEST_F(MacSystem, TakesNoTextAndNoDataForEmpty) {
  EXPECT_EQ(toText(nil), "");
  EXPECT_EQ(toBytes(nil), Bytes());
  EXPECT_EQ(toBytes(toNSData({})), Bytes());
  EXPECT_EQ(toText(toNSString("Zoë 😀")), "Zoë 😀");
  EXPECT_EQ(toText(toNSString(std::string("a\0b", 3))), std::string("a\0b", 3));
}

}  // namespace
}  // namespace torvane
