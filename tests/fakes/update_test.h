#pragma once

#include <functional>
#include <map>
#include <string>

#include "fakes/helper_test.h"

namespace torvane {

// What one of the system's tools does instead of its work.
struct FakeTool {
  int status = 0;
  std::string output;
  bool isMissing = false;
  bool hangs = false;  // half-way

  static FakeTool exiting(int status, std::string output = {}) {
    return {status, std::move(output)};
  }
  static FakeTool printing(std::string output) { return {0, std::move(output)}; }
  static FakeTool missing() { return {0, {}, true}; }
  static FakeTool hanging() { return {0, {}, false, true}; }

  [[nodiscard]] FakeProgram program() const;
};

// An installed helper of build 412 on a system whose update site has build 413.
class UpdateTest : public HelperTest {
 public:
  static constexpr const char* kInstalled = "/Applications/Torvane P2P Helper.app";
  static constexpr const char* kWork = "/temporary/torvane-helper-update-4711";
  static constexpr const char* kSetAside =
      "/Applications/Torvane P2P Helper.app.before-update-4711";
  static constexpr const char* kUnpacked =
      "/temporary/torvane-helper-update-4711/Torvane P2P Helper.app";
  static constexpr const char* kCheck = "Check for Updates";
  static constexpr const char* kInstall413 = "Update Helper to Build 413…";
  static constexpr int kLater = kAlertFirstButton + 1;

  FakeAnswer versionAnswer{httpResult(200, "413\n"), 0};
  FakeAnswer archiveAnswer;
  std::map<std::string, std::string> archive;  // path → text, or "→ " and a link's target
  std::map<std::string, FakeTool> tools;       // by name; the ones left out work

  using HelperTest::platform;

  UpdateTest();
  ~UpdateTest() override;
  void SetUp() override;

  void putArchive();  // what `archive` holds goes to the site
  void checkByHand();
  // The check that follows a launch: a newer build is known, and nothing was asked.
  void checkByTimer();

  // What an entry does that can be chosen now, also when it is chosen later: a menu stays open.
  [[nodiscard]] std::function<void()> entry(const std::string& title);
  // The menu's entry about updates; empty where there is none.
  [[nodiscard]] std::string menuEntry();

  [[nodiscard]] std::vector<HttpRequest> requestsOf(const std::string& file) const;
  [[nodiscard]] std::vector<std::string> toolsRun() const;
  [[nodiscard]] std::string lastAlert() const;
  [[nodiscard]] bool hasQuit() const;

 private:
  FakeAnswer serve(const HttpRequest& request);
  FakeProgram run(const ProcessLaunch& launch);
  FakeProgram ditto(const std::vector<std::string>& arguments);
  FakeProgram unpack(const std::string& zip, const std::string& into);
};

}  // namespace torvane
