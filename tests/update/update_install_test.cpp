#include <algorithm>

#include "fakes/update_test.h"

namespace torvane {
namespace {

const std::string kFailed = "Helper update not installed.\n\n";

class UpdateInstall : public UpdateTest {
 protected:
  // Confirms once a download has begun and not ended.
  void beginDownload() {
    archiveAnswer.delay = 30;
    checkByHand();
  }
};

TEST_F(UpdateInstall, AsksWithTheBuildAndTwoButtons) {
  platform.alerts.answers = {kLater};
  checkByHand();
  const AlertContent expected = {
      .message = "Update the Mac helper?",
      .informativeText =
          "Build 413 will be downloaded and this app will restart — the iPad reconnects by itself "
          "a few seconds later. Best done between presentations, not during one.",
      .buttons = {"Update and Restart", "Later"}};
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0], expected);
  EXPECT_EQ(platform.log, (CallLog{"activate", "alert Update the Mac helper?"}));
}

TEST_F(UpdateInstall, LaterDownloadsNothing) {
  platform.alerts.answers = {kLater};
  checkByHand();
  EXPECT_TRUE(requestsOf("/Torvane-P2P-Mac.zip").empty());
  EXPECT_EQ(menuEntry(), kInstall413);
}

TEST_F(UpdateInstall, NeedsAKnownUpdate) {
  platform.alerts.answers = {kLater};
  checkByHand();
  const auto install = entry(kInstall413);
  versionAnswer = {httpResult(200, "412"), 0};
  checkByTimer();
  EXPECT_EQ(menuEntry(), kCheck);
  const auto log = platform.log;
  install();
  EXPECT_EQ(platform.log, log);
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_TRUE(requestsOf("/Torvane-P2P-Mac.zip").empty());
}

TEST_F(UpdateInstall, SecondOneWhileOneIsInProgressDoesNothing) {
  archiveAnswer.delay = 30;
  checkByTimer();
  const auto install = entry(kInstall413);
  install();
  const auto log = platform.log;
  install();
  EXPECT_EQ(platform.log, log);
  EXPECT_EQ(requestsOf("/Torvane-P2P-Mac.zip").size(), 1U);
}

TEST_F(UpdateInstall, ConfirmedTwiceAtOnceIsOneInstall) {
  versionAnswer.delay = 1;
  archiveAnswer.delay = 30;
  checkByHand();
  checkByHand();  // its answer comes while the question of the first is up
  platform.time.advance(2);
  EXPECT_EQ(platform.alerts.shown.size(), 2U);
  EXPECT_EQ(platform.alerts.mostUpAtOnce, 2);
  EXPECT_EQ(requestsOf("/Torvane-P2P-Mac.zip").size(), 1U);
}

TEST_F(UpdateInstall, DownloadsTheArchiveToAFile) {
  beginDownload();
  const auto requests = requestsOf("/Torvane-P2P-Mac.zip");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].url,
            Updater::updateBase + std::string("/Torvane-P2P-Mac.zip?t=1795161791"));
  EXPECT_EQ(requests[0].idleTimeout, 60.0);
  EXPECT_EQ(requests[0].maxResponseBytes, 1073741824U);
  EXPECT_EQ(requests[0].saveTo, std::string(kWork) + ".zip");
}

TEST_F(UpdateInstall, MenuSaysUpdatingWhileItRuns) {
  beginDownload();
  EXPECT_EQ(menuEntry(), "Updating… (disabled)");
}

TEST_F(UpdateInstall, RunsTheToolsInOrderAndQuits) {
  checkByHand();
  const std::string work = kWork;
  const std::string app = kUnpacked;
  EXPECT_EQ(toolsRun(),
            (std::vector<std::string>{
                "/usr/bin/ditto|-x|-k|" + work + "/helper.zip|" + work,
                "/usr/sbin/spctl|-a|-t|exec|" + app, "/usr/bin/codesign|-dv|--verbose=2|" + app,
                "/usr/libexec/PlistBuddy|-c|Print :CFBundleVersion|" + app + "/Contents/Info.plist",
                "/usr/bin/ditto|" + app + "|" + kInstalled,
                "/bin/sh|-c|while /bin/kill -0 4711 2>/dev/null; do sleep 0.2; done; rm -rf '" +
                    work + "'; open '" + kInstalled + "'"}));
  EXPECT_EQ(platform.log, (CallLog{"activate", "alert Update the Mac helper?", "terminate"}));
}

TEST_F(UpdateInstall, NewCopyTakesTheOldOnesPlaceAndTheOldOneIsKept) {
  const auto before = platform.files.tree(kInstalled);
  checkByHand();
  EXPECT_EQ(platform.files.tree(kInstalled), platform.files.tree(kUnpacked));
  EXPECT_EQ(platform.files.text(std::string(kInstalled) + "/Contents/Info.plist"), "413");
  EXPECT_EQ(platform.files.tree(std::string(kWork) + "/old.app"), before);
  EXPECT_FALSE(platform.files.exists(std::string(kWork) + ".zip"));
}

TEST_F(UpdateInstall, LeavingsOfAnEarlierAttemptAreRemovedFirst) {
  platform.files.put(std::string(kWork) + "/old.app/bin/older", "older");
  platform.files.put(std::string(kWork) + ".zip", "half a download");
  checkByHand();
  EXPECT_TRUE(hasQuit());
  EXPECT_FALSE(platform.files.exists(std::string(kWork) + "/old.app/bin/older"));
}

TEST_F(UpdateInstall, LeavingsOfProcessesThatHaveEndedAreRemoved) {
  const std::string other = "/temporary/torvane-helper-update-4000";
  platform.files.put(other + "/helper.zip", "PK");
  platform.files.put(other + ".zip", "half a download");
  tools["kill"].status = 1;
  tools["spctl"].status = 3;
  checkByHand();
  EXPECT_EQ(toolsRun()[0], "/bin/kill|-0|4000");
  EXPECT_FALSE(platform.files.exists(other));
  EXPECT_FALSE(platform.files.exists(other + ".zip"));
}

TEST_F(UpdateInstall, LeavingsOfWhatMayStillRunStay) {
  const std::string other = "/temporary/torvane-helper-update-4000/helper.zip";
  platform.files.put(other, "PK");
  tools["spctl"].status = 3;
  checkByTimer();
  for (const bool isMissing : {false, true}) {
    tools["kill"].isMissing = isMissing;
    choose(kInstall413);
    EXPECT_TRUE(platform.files.exists(other));
  }
  EXPECT_EQ(requestsOf("/Torvane-P2P-Mac.zip").size(), 2U);
}

TEST_F(UpdateInstall, OtherNamesAreNoLeavings) {
  tools["kill"].status = 1;
  for (const char* name : {"torvane-helper-update-", "torvane-helper-update-12x", "4000.zip",
                           "torvane-helper-update-.zip"}) {
    platform.files.put(std::string("/temporary/") + name + "/kept", "text");
  }
  checkByHand();
  EXPECT_TRUE(hasQuit());
  EXPECT_EQ(toolsRun().size(), 6U);
  EXPECT_TRUE(platform.files.exists("/temporary/torvane-helper-update-/kept"));
}

TEST_F(UpdateInstall, OldCopyOfAKilledProcessStaysUntilANewOneIsInPlace) {
  const std::string work = "/temporary/torvane-helper-update-4000";
  const std::string aside = std::string(kInstalled) + ".before-update-4000";
  for (const std::string& old : {work + "/old.app", aside}) {
    platform.files.put(old + "/bin/torvane-p2p-helper", "the program of 411");
  }
  platform.files.put(work + "/helper.zip", "PK");
  tools["kill"].status = 1;
  tools["second ditto"].status = 1;
  checkByHand();
  EXPECT_EQ(platform.files.names(work), std::vector<std::string>{"old.app"});
  EXPECT_TRUE(platform.files.exists(aside));
  tools.erase("second ditto");
  choose(kInstall413);
  EXPECT_TRUE(hasQuit());
  EXPECT_FALSE(platform.files.exists(work));
  EXPECT_FALSE(platform.files.exists(aside));
}

TEST_F(UpdateInstall, OldCopyThatCannotGoBackIsLeft) {
  const std::string old = std::string(kWork) + "/old.app";
  const auto before = platform.files.tree(kInstalled);
  platform.files.immovable.insert(old);
  tools["second ditto"].status = 1;
  checkByHand();
  for (int attempt = 1; attempt <= 2; ++attempt) {
    EXPECT_EQ(platform.files.tree(old), before) << attempt;
    EXPECT_EQ(platform.files.names(kWork), std::vector<std::string>{"old.app"}) << attempt;
    choose(kInstall413);
  }
  EXPECT_FALSE(hasQuit());
}

TEST_F(UpdateInstall, WhatTheUserHasBesideTheInstalledCopyStays) {
  const std::string beside = kInstalled;
  const std::vector<std::string> own = {".old", "-old/deep", ".before-update-", ".before-update-4x",
                                        ".before-update-4000"};
  for (const auto& end : own) platform.files.put(beside + end, "the user's own");
  platform.files.put(beside + ".before/kept", "the user's own");
  platform.files.disks = {"/Applications"};
  tools["kill"].status = 1;
  checkByHand();
  EXPECT_TRUE(hasQuit());
  for (const auto& end : own) EXPECT_EQ(platform.files.text(beside + end), "the user's own") << end;
  EXPECT_EQ(platform.files.text(beside + ".before/kept"), "the user's own");
}

TEST_F(UpdateInstall, LeavingsAreRemovedBeforeTheDownload) {
  const std::string other = "/temporary/torvane-helper-update-4000";
  platform.files.put(other + "/helper.zip", "PK");
  platform.files.put(other + ".zip", "half a download");
  platform.files.put(std::string(kWork) + "/helper.zip", "PK");
  tools["kill"].status = 1;
  beginDownload();
  EXPECT_EQ(requestsOf("/Torvane-P2P-Mac.zip").size(), 1U);
  for (const std::string& path : {other, other + ".zip", std::string(kWork)}) {
    EXPECT_FALSE(platform.files.exists(path)) << path;
  }
}

TEST_F(UpdateInstall, SystemItselfChecksThatOurTeamSigned) {
  checkByHand();
  EXPECT_TRUE(hasQuit());
  const std::vector<std::pair<std::string, std::string>> expected = {
      {kUnpacked,
       "anchor apple generic and certificate 1[field.1.2.840.113635.100.6.2.6] exists and "
       "certificate leaf[field.1.2.840.113635.100.6.1.13] exists and certificate "
       "leaf[subject.OU] = \"ZQ4W8N2HJT\""}};
  EXPECT_EQ(platform.codeCheck.requirements, expected);
}

TEST_F(UpdateInstall, MenuSaysNothingOfAnUpdateThatIsWithdrawnWhileItRuns) {
  beginDownload();
  versionAnswer = {httpResult(200, "412\n"), 0};
  checkByTimer();
  EXPECT_EQ(menuEntry(), kCheck);
}

// A program that ends while a tool hangs.
class UpdateQuit : public UpdateInstall, public testing::WithParamInterface<const char*> {
 protected:
  void quit() {
    helper->applicationWillTerminate();
    for (const auto& tool : platform.processes.launched) EXPECT_FALSE(tool.process->isRunning());
    helper.reset();
  }
  [[nodiscard]] bool isOpenedAgain() const {
    const auto run = toolsRun();
    return std::any_of(run.begin(), run.end(),
                       [](const std::string& line) { return line.starts_with("/bin/sh|"); });
  }
  void expectNothingLeft() {
    EXPECT_FALSE(isOpenedAgain());
    EXPECT_FALSE(platform.files.exists(kWork));
    EXPECT_FALSE(platform.files.exists(std::string(kWork) + ".zip"));
    EXPECT_EQ(platform.files.names("/Applications"),
              std::vector<std::string>{"Torvane P2P Helper.app"});
  }
};

TEST_P(UpdateQuit, EndsTheToolAndLeavesTheInstalledCopyWhole) {
  const auto before = platform.files.tree(kInstalled);
  tools[GetParam()] = FakeTool::hanging();
  platform.time.scheduleMain(1, [this] { quit(); });
  checkByHand();
  platform.time.advance(60);
  EXPECT_EQ(helper, nullptr);
  EXPECT_FALSE(platform.processes.launched.back().process->isRunning());
  EXPECT_EQ(platform.files.tree(kInstalled), before);
  expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(EachTool, UpdateQuit,
                         testing::Values("ditto", "spctl", "codesign", "PlistBuddy",
                                         "second ditto"),
                         [](const auto& tool) {
                           std::string name = tool.param;
                           std::erase(name, ' ');
                           return name;
                         });

class UpdateQuitInBetween : public UpdateQuit {};

TEST_F(UpdateQuitInBetween, OldCopyOnItsWayToAnotherDiskStaysInItsPlace) {
  platform.files.disks = {"/Applications"};
  const auto before = platform.files.tree(kInstalled);
  platform.files.whileCrossing = [this] {
    platform.time.scheduleMain(0, [this] { quit(); });
    platform.time.runDue();
  };
  checkByHand();
  EXPECT_EQ(helper, nullptr);
  EXPECT_EQ(platform.files.tree(kInstalled), before);
  expectNothingLeft();
}

TEST_F(UpdateQuitInBetween, NewCopyThatIsFinishedStaysAndIsNotOpened) {
  tools["second ditto"] = FakeTool::hanging();
  platform.time.scheduleMain(1, [this] {
    platform.processes.launched.back().process->exit(0);
    quit();
  });
  checkByHand();
  EXPECT_EQ(platform.files.text(std::string(kInstalled) + "/Contents/Info.plist"), "413");
  expectNothingLeft();
}

TEST_F(UpdateQuitInBetween, DownloadIsNotWaitedFor) {
  beginDownload();
  helper->applicationWillTerminate();
  EXPECT_EQ(platform.mainQueue.blockedFor, 0);
}

TEST_F(UpdateQuitInBetween, HangingToolIsWaitedForNoLongerThanASecond) {
  tools["spctl"] = FakeTool::hanging();
  platform.time.scheduleMain(1, [this] { helper->applicationWillTerminate(); });
  checkByHand();
  platform.time.advance(60);
  EXPECT_LE(platform.mainQueue.blockedFor, 1.01);
}

TEST_F(UpdateInstall, OriginalOnAnotherDiskGoesOnceTheNewCopyIsInPlace) {
  platform.files.disks = {"/Applications"};
  const auto before = platform.files.tree(kInstalled);
  platform.files.put(std::string(kSetAside) + "/bin/older", "older");
  checkByHand();
  EXPECT_TRUE(hasQuit());
  EXPECT_EQ(platform.files.tree(kInstalled), platform.files.tree(kUnpacked));
  EXPECT_EQ(platform.files.tree(std::string(kWork) + "/old.app"), before);
  EXPECT_FALSE(platform.files.exists(kSetAside));
}

// The disk may be too full to take back what was copied to another one.
TEST_F(UpdateInstall, OriginalOnAnotherDiskIsWhatGoesBack) {
  platform.files.disks = {"/Applications"};
  platform.files.immovable.insert(std::string(kWork) + "/old.app");
  const auto before = platform.files.tree(kInstalled);
  tools["second ditto"].status = 1;
  checkByHand();
  EXPECT_EQ(platform.files.tree(kInstalled), before);
  EXPECT_EQ(platform.files.names("/Applications"),
            std::vector<std::string>{"Torvane P2P Helper.app"});
  EXPECT_FALSE(platform.files.exists(std::string(kWork) + "/old.app"));
}

TEST_F(UpdateInstall, PathWithAQuoteNeverReachesTheShell) {
  const std::string installed = "/Applications/Anna's/Torvane P2P Helper.app";
  ASSERT_EQ(platform.files.move(kInstalled, installed, {}), std::nullopt);
  platform.bundle.bundlePath = installed;
  checkByHand();
  EXPECT_TRUE(hasQuit());
  EXPECT_EQ(platform.files.text(installed + "/Contents/Info.plist"), "413");
  EXPECT_EQ(toolsRun().back(), std::string("/usr/bin/ditto|") + kUnpacked + "|" + installed);
}

TEST_F(UpdateInstall, FailedRelaunchIsIgnored) {
  tools["sh"].isMissing = true;
  checkByHand();
  EXPECT_TRUE(hasQuit());
  EXPECT_EQ(platform.alerts.shown.size(), 1U);
}

TEST_F(UpdateInstall, MayBeTriedAgainAfterAFailure) {
  tools["spctl"].status = 3;
  checkByHand();
  EXPECT_FALSE(hasQuit());
  tools.clear();
  choose(kInstall413);
  EXPECT_TRUE(hasQuit());
}

TEST_F(UpdateInstall, HelperThatHasGoneStopsBeforeTheInstalledCopyIsTouched) {
  const auto before = platform.files.tree(kInstalled);
  beginDownload();
  helper.reset();
  platform.time.advance(60);
  EXPECT_TRUE(toolsRun().empty());
  EXPECT_EQ(platform.files.tree(kInstalled), before);
  EXPECT_FALSE(platform.files.exists(std::string(kWork) + ".zip"));
}

const std::string kDownload =
    "The download failed. Check the internet connection and try again from the menu.";
const std::string kUnpack = "The downloaded file could not be unpacked.";
const std::string kGatekeeper = "The download failed Gatekeeper verification.";
const std::string kSigner = "The download is not signed by the expected developer.";
const std::string kVersion =
    "The downloaded version does not match the published one — the site may still be deploying. "
    "Try again in a few minutes.";
const std::string kReplace = "Could not replace the app in /Applications: ";
const std::string kInstall = "Could not install the new copy.";
const std::string kDisk = "The disk is full. Make some room on it and try again from the menu.";
const std::string kNoSpace = "ditto: /x: No space left on device\n";

const std::string kPlist = "Torvane P2P Helper.app/Contents/Info.plist";

// One step of the way that goes wrong.
struct BadStep {
  const char* name;
  std::function<void(UpdateTest&)> arrange;
  std::string reason;
};

void PrintTo(const BadStep& step, std::ostream* stream) {
  *stream << step.name;
}

std::function<void(UpdateTest&)> answered(HttpResult result) {
  return [result = std::move(result)](UpdateTest& test) { test.archiveAnswer = {result, 0}; };
}

std::function<void(UpdateTest&)> tool(const char* name, FakeTool does) {
  return [name, does](UpdateTest& test) { test.tools[name] = does; };
}

std::function<void(UpdateTest&)> holding(const std::string& path, const std::string& text) {
  return [path, text](UpdateTest& test) {
    test.archive[path] = text;
    test.putArchive();
  };
}

HttpResult cutShort() {
  HttpResult result = httpResult(200, "PKhalf");
  result.error = "The connection was lost.";
  return result;
}

HttpResult withoutRoom() {
  HttpResult result = httpError("The response could not be written to a file.");
  result.diskIsFull = true;
  return result;
}

const std::vector<BadStep> kBadSteps = {
    {"ServerIsGone", answered(httpError("Could not connect.")), kDownload},
    {"ServerGoesInMidDownload", answered(cutShort()), kDownload},
    {"ArchiveIsNotFound", answered(httpResult(404, "PK")), kDownload},
    {"AnswerIsPartial", answered(httpResult(206, "PK")), kDownload},
    {"AnswerHasNoHeader", answered(HttpResult{}), kDownload},
    {"DownloadCannotBeWritten",
     [](UpdateTest& test) {
       test.platform.files.unwritable.insert(std::string(UpdateTest::kWork) + ".zip");
     },
     kDownload},
    {"DiskIsFullForTheDownload", answered(withoutRoom()), kDisk},
    {"DiskIsFullForUnpacking", tool("ditto", FakeTool::exiting(1, kNoSpace)),
     kUnpack + "\n\n" + kDisk},
    {"DiskIsFullForTheNewCopy", tool("second ditto", FakeTool::exiting(1, kNoSpace)),
     kInstall + "\n\n" + kDisk},
    {"DownloadTakesTooLong", [](UpdateTest& test) { test.archiveAnswer.delay = 3600; }, kDownload},
    {"WorkFolderIsAnotherUsers",
     [](UpdateTest& test) { test.platform.files.foreign.insert(UpdateTest::kWork); }, kUnpack},
    {"DownloadCannotBeMoved",
     [](UpdateTest& test) {
       test.platform.files.immovable.insert(std::string(UpdateTest::kWork) + ".zip");
     },
     kUnpack},
    {"ArchiveIsNone", answered(httpResult(200, "<html>")), kUnpack},
    {"ArchiveIsCutShort", answered(httpResult(200, "PKTorvane P2P Helper.app/a")), kUnpack},
    {"UnpackingToolIsMissing", tool("ditto", FakeTool::missing()), kUnpack},
    {"UnpackingToolIsKilled", tool("ditto", FakeTool::exiting(9)), kUnpack},
    {"ArchiveHoldsNothing",
     [](UpdateTest& test) {
       test.archive.clear();
       test.putArchive();
     },
     kUnpack},
    {"ArchiveHoldsAnotherName",
     [](UpdateTest& test) {
       test.archive = {{"Other.app/Contents/Info.plist", "413"}};
       test.putArchive();
     },
     kUnpack},
    {"ApplicationIsAFile",
     [](UpdateTest& test) {
       test.archive = {{"Torvane P2P Helper.app", "text"}};
       test.putArchive();
     },
     kUnpack},
    {"ApplicationIsALink",
     [](UpdateTest& test) {
       test.archive = {{"Torvane P2P Helper.app", "→ /Applications/Torvane P2P Helper.app"}};
       test.putArchive();
     },
     kUnpack},
    {"LinkLeadsOut", holding("Torvane P2P Helper.app/out", "→ /home/presenter"), kUnpack},
    {"LinkClimbsOut", holding("Torvane P2P Helper.app/bin/out", "→ ../../x"), kUnpack},
    {"LinksCannotBeRead",
     [](UpdateTest& test) { test.platform.files.unreadable.insert(UpdateTest::kUnpacked); },
     kUnpack},
    {"GatekeeperRefuses", tool("spctl", FakeTool::exiting(3, "rejected")), kGatekeeper},
    {"GatekeeperIsMissing", tool("spctl", FakeTool::missing()), kGatekeeper},
    {"SignatureIsMissing",
     tool("codesign", FakeTool::exiting(1, "code object is not signed at all")), kSigner},
    {"SigningToolFailsThoughItNamesUs",
     tool("codesign", FakeTool::exiting(1, "TeamIdentifier=ZQ4W8N2HJT\n")), kSigner},
    {"SignerIsAnotherTeam", tool("codesign", FakeTool::printing("TeamIdentifier=AAAAAAAAAA\n")),
     kSigner},
    {"SignerNamesUsInItsIdentifier",
     tool("codesign",
          FakeTool::printing("Identifier=TeamIdentifier=ZQ4W8N2HJT\nTeamIdentifier=AAAAAAAAAA\n")),
     kSigner},
    {"SignerIsUnknown", tool("codesign", FakeTool::printing("TeamIdentifier=not set\n")), kSigner},
    {"SignatureDoesNotMeetOurRequirement",
     [](UpdateTest& test) { test.platform.codeCheck.refused.insert(UpdateTest::kUnpacked); },
     kSigner},
    {"SigningToolIsMissing", tool("codesign", FakeTool::missing()), kSigner},
    {"BuildIsAnotherThanPublished", holding(kPlist, "414"), kVersion},
    {"BuildIsOlder", holding(kPlist, "411"), kVersion},
    {"BuildIsTheSameInAnotherSpelling", holding(kPlist, "0413"), kVersion},
    {"BuildIsUnknown", holding(kPlist, ""), kVersion},
    {"VersionToolFails", tool("PlistBuddy", FakeTool::exiting(1, "413\n")), kVersion},
    {"VersionToolIsMissing", tool("PlistBuddy", FakeTool::missing()), kVersion},
    {"OldCopyCannotBeMoved",
     [](UpdateTest& test) { test.platform.files.immovable.insert(UpdateTest::kInstalled); },
     kReplace + "Permission denied."},
    {"NewCopyIsHalfCopied", tool("second ditto", FakeTool::exiting(1)), kInstall},
    {"CopyingToolIsKilled", tool("second ditto", FakeTool::exiting(9)), kInstall},
};

class UpdateFailure : public UpdateInstall, public testing::WithParamInterface<BadStep> {};

TEST_P(UpdateFailure, IsToldAndLeavesTheInstalledCopyAsItWas) {
  const auto before = platform.files.tree(kInstalled);
  GetParam().arrange(*this);
  checkByHand();
  platform.time.advance(70);

  EXPECT_EQ(platform.alerts.shown.size(), 2U);
  EXPECT_EQ(platform.alerts.shown.back().message, "Torvane P2P Helper");
  EXPECT_EQ(lastAlert(), kFailed + GetParam().reason);
  EXPECT_EQ(platform.files.tree(kInstalled), before);
  EXPECT_TRUE(platform.files.tree("/temporary").empty());
  EXPECT_FALSE(hasQuit());
  EXPECT_EQ(menuEntry(), kInstall413);
}

INSTANTIATE_TEST_SUITE_P(EachStep, UpdateFailure, testing::ValuesIn(kBadSteps),
                         [](const auto& step) { return std::string(step.param.name); });

// The build that is on its way is the one that was offered, and must be newer still.
TEST_F(UpdateInstall, BuildThatEqualsTheRunningOneIsRefusedEvenWhenPublished) {
  platform.alerts.whileUp = [this](const AlertContent&) {
    platform.bundle.info["CFBundleVersion"] = "413";
  };
  checkByHand();
  EXPECT_EQ(lastAlert(), kFailed + kVersion);
  EXPECT_FALSE(hasQuit());
}

TEST_F(UpdateInstall, LaterStepsDoNotRunAfterAFailure) {
  tools["codesign"].output = "TeamIdentifier=AAAAAAAAAA\n";
  checkByHand();
  EXPECT_EQ(toolsRun().size(), 3U);
  EXPECT_TRUE(toolsRun().back().starts_with("/usr/bin/codesign|"));
}

TEST_F(UpdateInstall, ArchiveOfAnotherUsersFolderIsNotUnpacked) {
  platform.files.foreign.insert(kWork);
  checkByHand();
  EXPECT_TRUE(toolsRun().empty());
}

}  // namespace
}  // namespace torvane
