#include "app/install_hygiene.h"

#include "fakes/helper_test.h"

namespace torvane {
namespace {

constexpr const char* kFormer = "/Applications/Torvane P2P.app";

class RetiredCopies : public HelperTest {
 protected:
  void SetUp() override { platform.bundle.bundlePath = "/home/presenter/Downloads/T.app"; }
  void runCopies(std::vector<RunningApplication> copies) {
    platform.runningApplications.running["org.example.helper"] = std::move(copies);
  }
};

TEST_F(RetiredCopies, CopyFromDownloadsEndsTheInstalledOneAndTrashesTheOldName) {
  runCopies({{4711, "/home/presenter/Downloads/T.app"}, {99, "/Applications/T.app"}});
  platform.files.folders.insert(kFormer);
  retireOldNamedApp(platform.ports);
  EXPECT_EQ(platform.log, (CallLog{"force terminate 99", "trash /Applications/Torvane P2P.app"}));
}

TEST_F(RetiredCopies, ApplicationsOfUnknownPlaceAreLeftAlone) {
  runCopies({{98, std::nullopt}, {99, "/Applications/T.app"}});
  retireOldNamedApp(platform.ports);
  EXPECT_EQ(platform.runningApplications.ended, std::vector<int>{99});
}

TEST_F(RetiredCopies, OtherIdentifiersAreLeftAlone) {
  platform.runningApplications.running["org.example.other"] = {{99, "/Applications/O.app"}};
  retireOldNamedApp(platform.ports);
  EXPECT_TRUE(platform.runningApplications.ended.empty());
}

TEST_F(RetiredCopies, WithoutAnIdentifierNothingIsEndedButTheOldNameIsTrashed) {
  runCopies({{99, "/Applications/T.app"}});
  platform.bundle.info.erase("CFBundleIdentifier");
  platform.files.folders.insert(kFormer);
  retireOldNamedApp(platform.ports);
  EXPECT_TRUE(platform.runningApplications.ended.empty());
  EXPECT_EQ(platform.workspace.trashed, std::vector<std::string>{kFormer});
}

TEST_F(RetiredCopies, CopyUnderTheOldNameTrashesNothing) {
  platform.bundle.bundlePath = kFormer;
  platform.files.folders.insert(kFormer);
  runCopies({{99, "/Applications/T.app"}});
  retireOldNamedApp(platform.ports);
  EXPECT_EQ(platform.runningApplications.ended, std::vector<int>{99});
  EXPECT_TRUE(platform.workspace.trashed.empty());
}

TEST_F(RetiredCopies, NothingIsTrashedWhereThereIsNoOldName) {
  retireOldNamedApp(platform.ports);
  EXPECT_TRUE(platform.workspace.trashed.empty());
}

TEST_F(RetiredCopies, FailureToTrashIsSilent) {
  platform.workspace.canTrash = false;
  platform.files.folders.insert(kFormer);
  launch();
  EXPECT_EQ(platform.workspace.trashed.size(), 1U);
  EXPECT_TRUE(platform.alerts.shown.empty());
  EXPECT_EQ(platform.peerLink.sessions.size(), 1U);
}

class PermissionReset : public HelperTest {
 protected:
  void SetUp() override {
    platform.accessibility.isGranted = false;
    platform.files.put(*platform.bundle.executable, "abc");
    platform.processes.program = [](const ProcessLaunch&) { return FakeProgram{"", 0, ""}; };
  }
  std::vector<std::vector<std::string>> resets() {
    std::vector<std::vector<std::string>> found;
    for (const auto& entry : platform.processes.launchesWith("reset")) {
      EXPECT_EQ(entry.launch.executable, "/usr/bin/tccutil");
      EXPECT_EQ(entry.launch.output, ProcessOutput::nullDevice);
      found.push_back(entry.launch.arguments);
    }
    return found;
  }
  JsonValue stored() { return platform.defaults.stored["tccResetForBinary"]; }

  const std::string hashOfAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  const std::vector<std::vector<std::string>> everyReset = {
      {"reset", "Accessibility", "org.example.helper"},
      {"reset", "AppleEvents", "org.example.helper"},
      {"reset", "SystemPolicyAppData", "org.example.helper"}};
};

TEST_F(PermissionReset, NewExecutableResetsThreeServicesInOrderAndIsRemembered) {
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_EQ(resets(), everyReset);
  EXPECT_EQ(stored(), JsonValue(hashOfAbc));
}

TEST_F(PermissionReset, SameExecutableIsNotResetAgain) {
  tccSelfHealIfReplaced(platform.ports);
  platform.processes.launched.clear();
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_TRUE(resets().empty());
}

TEST_F(PermissionReset, ReplacedExecutableIsResetAgain) {
  tccSelfHealIfReplaced(platform.ports);
  platform.files.put(*platform.bundle.executable, "abcd");
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_EQ(resets().size(), 6U);
}

TEST_F(PermissionReset, GrantedPermissionLeavesEverythingAlone) {
  platform.accessibility.isGranted = true;
  platform.defaults.stored["tccResetForBinary"] = "older";
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_TRUE(resets().empty());
  EXPECT_EQ(stored(), JsonValue("older"));
}

TEST_F(PermissionReset, EmptyOrOddMemoryCountsAsAnother) {
  for (const JsonValue& odd : {JsonValue(""), JsonValue(true), JsonValue(nullptr)}) {
    platform.defaults.stored["tccResetForBinary"] = odd;
    platform.processes.launched.clear();
    tccSelfHealIfReplaced(platform.ports);
    EXPECT_EQ(resets(), everyReset);
  }
}

TEST_F(PermissionReset, HashIsStoredBeforeTheFirstToolRuns) {
  platform.processes.program = [this](const ProcessLaunch&) {
    EXPECT_EQ(stored(), JsonValue(hashOfAbc));
    return FakeProgram{"", 0, ""};
  };
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_EQ(resets().size(), 3U);
}

TEST_F(PermissionReset, EachToolHasEndedBeforeTheNextStarts) {
  platform.processes.program = [this](const ProcessLaunch&) {
    for (const auto& entry : platform.processes.launched) EXPECT_FALSE(entry.process->isRunning());
    return FakeProgram{};
  };
  // Tools that take their time: each ends half a second after it was started.
  for (const double end : {0.5, 1.0, 1.5}) {
    platform.time.scheduleBackground(
        end, [this] { platform.processes.launched.back().process->exit(0); });
  }
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_EQ(resets(), everyReset);
  EXPECT_NEAR(platform.time.now(), 1.5, 0.2);
}

TEST_F(PermissionReset, FailingToolsDoNotEndTheLoop) {
  int launches = 0;
  platform.processes.program = [&](const ProcessLaunch&) {
    return ++launches == 1 ? FakeProgram{"", std::nullopt, "no such file"} : FakeProgram{"", 1, ""};
  };
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_EQ(launches, 3);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(PermissionReset, UnreadableOrUnknownExecutableDoesNothing) {
  platform.files.unreadable.insert(*platform.bundle.executable);
  tccSelfHealIfReplaced(platform.ports);
  platform.bundle.executable = std::nullopt;
  tccSelfHealIfReplaced(platform.ports);
  EXPECT_TRUE(resets().empty());
  EXPECT_EQ(platform.defaults.stored.count("tccResetForBinary"), 0U);
}

TEST_F(PermissionReset, BundleWithoutAnIdentifierUsesTheProgramsOwn) {
  platform.bundle.info.erase("CFBundleIdentifier");
  tccSelfHealIfReplaced(platform.ports);
  ASSERT_EQ(resets().size(), 3U);
  EXPECT_EQ(resets()[0].back(), "app.torvane.p2p-helper");
}

TEST(FullDiskAccess, MeansThatThePrivacyDatabaseCanBeRead) {
  SimulatedPlatform platform;
  EXPECT_TRUE(hasFullDiskAccess(platform.ports));
  platform.privacyDatabase.isReadable = false;
  EXPECT_FALSE(hasFullDiskAccess(platform.ports));
  EXPECT_EQ(platform.privacyDatabase.asked.back(),
            "/home/presenter/Library/Application Support/com.apple.TCC/TCC.db");
}

}  // namespace
}  // namespace torvane
