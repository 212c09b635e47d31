#include "fakes/update_test.h"

namespace torvane {
namespace {

using namespace std::string_literals;

constexpr const char* kUnreachable =
    "Couldn't reach the update server — check the internet connection and try again.";

class UpdateCheck : public UpdateTest {
 protected:
  void publish(const std::string& text) { versionAnswer = {httpResult(200, text), 0}; }
};

TEST_F(UpdateCheck, AsksTheSiteForItsVersionAndDefeatsCaches) {
  checkByHand();
  const auto requests = requestsOf("/version.txt");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].url, Updater::updateBase + std::string("/version.txt?t=1795161791"));
  EXPECT_EQ(requests[0].method, "GET");
  EXPECT_EQ(requests[0].idleTimeout, 15.0);
}

TEST_F(UpdateCheck, SiteIsASecureOne) {
  const std::string site = Updater::updateBase;
  EXPECT_TRUE(site.starts_with("https://"));
  EXPECT_TRUE(site.ends_with("/torvane"));
}

TEST_F(UpdateCheck, FirstOneComesFiveSecondsAfterLaunch) {
  platform.time.advance(4.9);
  EXPECT_TRUE(requestsOf("/version.txt").empty());
  platform.time.advance(0.2);
  EXPECT_EQ(requestsOf("/version.txt").size(), 1U);
  EXPECT_EQ(menuEntry(), kInstall413);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(UpdateCheck, OthersFollowTwiceADay) {
  platform.http.keepsRequests = false;
  int checks = 0;
  platform.http.server = [&](const HttpRequest& request) {
    checks += request.url.find("/version.txt") != std::string::npos ? 1 : 0;
    return FakeAnswer{
        httpError("Could not connect.")};  // nor to an engine, which has its own needs
  };
  platform.time.advance(43199);
  EXPECT_EQ(checks, 1);
  platform.time.advance(2);
  EXPECT_EQ(checks, 2);
}

TEST_F(UpdateCheck, BuildMayStandAmongSpacesAndLineFeeds) {
  publish("  413\n");
  checkByTimer();
  EXPECT_EQ(menuEntry(), kInstall413);
}

TEST_F(UpdateCheck, DotsAndLettersAreReportedAsUnreachable) {
  for (const std::string& text : {"4.13"s, "413a"s, "<html>"s, ""s, std::string(32, '9')}) {
    publish(text);
    checkByHand();
    EXPECT_EQ(lastAlert(), kUnreachable);
    EXPECT_EQ(menuEntry(), kCheck);
  }
  EXPECT_EQ(platform.alerts.shown.size(), 5U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Torvane P2P Helper");
}

TEST_F(UpdateCheck, EverythingButA200IsUnreachable) {
  HttpResult cutShort = httpResult(200, "413");
  cutShort.error = "The connection was lost.";
  for (const auto& result :
       {httpError("Could not connect."), httpResult(404, "413"), httpResult(206, "413"),
        httpResult(500), httpResult(204), httpResult(200), httpResult(200, "413\xFF"), cutShort}) {
    versionAnswer = {result, 0};
    checkByHand();
    EXPECT_EQ(lastAlert(), kUnreachable);
  }
  EXPECT_EQ(platform.alerts.shown.size(), 8U);
  EXPECT_EQ(menuEntry(), kCheck);
}

TEST_F(UpdateCheck, SiteThatDoesNotAnswerIsGivenUpAfter15Seconds) {
  versionAnswer.delay = 3600;
  checkByHand();
  platform.time.advance(14.9);
  EXPECT_TRUE(platform.alerts.shown.empty());
  platform.time.advance(0.2);
  EXPECT_EQ(lastAlert(), kUnreachable);
}

TEST_F(UpdateCheck, FailureOfATimersCheckIsSilentAndKeepsTheOffer) {
  for (const auto& result : {httpResult(200, "4.14"), httpError("Could not connect.")}) {
    launch();
    publish("413");
    platform.alerts.answers = {kLater};
    checkByHand();
    platform.alerts.shown.clear();
    versionAnswer = {result, 0};
    checkByTimer();
    EXPECT_EQ(menuEntry(), kInstall413);
    EXPECT_TRUE(platform.alerts.shown.empty());
  }
  EXPECT_EQ(requestsOf("/version.txt").size(), 4U);
}

TEST_F(UpdateCheck, FailureOfACheckByHandKeepsTheOfferToo) {
  const auto check = entry(kCheck);
  checkByTimer();
  versionAnswer = {httpError("Could not connect."), 0};
  check();
  EXPECT_EQ(lastAlert(), kUnreachable);
  EXPECT_EQ(menuEntry(), kInstall413);
}

TEST_F(UpdateCheck, EqualBuildIsUpToDateAndClearsTheOffer) {
  const auto check = entry(kCheck);
  checkByTimer();
  EXPECT_EQ(menuEntry(), kInstall413);
  publish("412");
  check();
  EXPECT_EQ(lastAlert(), "You're up to date — build 412 is the latest.");
  EXPECT_EQ(platform.alerts.shown.back().message, "Torvane P2P Helper");
  EXPECT_EQ(menuEntry(), kCheck);
}

TEST_F(UpdateCheck, OlderBuildIsUpToDateToo) {
  publish("99");
  checkByHand();
  EXPECT_EQ(lastAlert(), "You're up to date — build 412 is the latest.");
}

TEST_F(UpdateCheck, TimersCheckClearsAStaleOfferInSilence) {
  platform.alerts.answers = {kLater};
  checkByHand();
  EXPECT_EQ(menuEntry(), kInstall413);
  publish("412");
  checkByTimer();
  EXPECT_EQ(menuEntry(), kCheck);
  EXPECT_EQ(platform.alerts.shown.size(), 1U);  // the question before
}

TEST_F(UpdateCheck, BuildsCompareByValue) {
  platform.bundle.info["CFBundleVersion"] = "99";
  publish("100");
  checkByTimer();
  EXPECT_EQ(menuEntry(), "Update Helper to Build 100…");
}

TEST_F(UpdateCheck, CopyElsewhereDoesAndShowsNothing) {
  for (const char* path : {"/home/presenter/Downloads/Torvane P2P Helper.app", "/Applications",
                           "/ApplicationsX/A.app", "/opt/Applications/A.app"}) {
    platform.bundle.bundlePath = kInstalled;
    launch();
    const auto check = entry(kCheck);
    platform.bundle.bundlePath = path;
    check();
    checkByTimer();
    EXPECT_EQ(menuEntry(), "") << path;
  }
  EXPECT_TRUE(requestsOf("/version.txt").empty());
  EXPECT_TRUE(platform.alerts.shown.empty());
}

TEST_F(UpdateCheck, CopyInAFolderBelowApplicationsIsInstalled) {
  platform.bundle.bundlePath = "/Applications/Utilities/A.app";
  checkByTimer();
  EXPECT_EQ(menuEntry(), kInstall413);
}

TEST_F(UpdateCheck, WithoutAVersionOfItsOwnAnyBuildIsNewer) {
  platform.bundle.info.erase("CFBundleVersion");
  publish("1");
  const auto check = entry(kCheck);
  checkByTimer();
  EXPECT_EQ(menuEntry(), "Update Helper to Build 1…");
  publish("0");
  check();
  EXPECT_EQ(lastAlert(), "You're up to date — build 0 is the latest.");
}

TEST_F(UpdateCheck, VersionThatIsNoTextCountsAsNone) {
  platform.bundle.info["CFBundleVersion"] = 412;
  publish("0");
  checkByHand();
  EXPECT_EQ(lastAlert(), "You're up to date — build 0 is the latest.");
}

TEST_F(UpdateCheck, ByHandANewerBuildIsOfferedAtOnce) {
  platform.alerts.answers = {kLater};
  checkByHand();
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_EQ(platform.alerts.shown[0].message, "Update the Mac helper?");
  EXPECT_EQ(menuEntry(), kInstall413);
}

TEST_F(UpdateCheck, AnswerForAHelperThatHasGoneIsDropped) {
  versionAnswer.delay = 1;
  checkByHand();
  helper.reset();
  platform.time.advance(2);
  EXPECT_EQ(requestsOf("/version.txt").size(), 1U);
  EXPECT_TRUE(platform.alerts.shown.empty());
}

}  // namespace
}  // namespace torvane
