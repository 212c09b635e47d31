// The way from an offered build to its installed copy.
// Events: "Update Helper to Build …", a check by hand that found a newer build. Fields:
// updateInProgress. Ports: Application, Alerts, HttpSession, FileSystem, ProcessLauncher, Bundle,
// ProcessInfo.

#include "app/bridge_delegate.h"
#include "update/apply_update.h"

namespace torvane {
namespace {

constexpr double kLongestDownload = 604800;
constexpr std::uint64_t kMostArchiveBytes = std::uint64_t{1} << 30;

// At the program's end, in seconds
constexpr double kStep = 0.05;
constexpr double kLongestGoodbye = 1;
constexpr double kLongestRepair = 10;

constexpr const char* kNotDownloaded =
    "The download failed. Check the internet connection and try again from the menu.";

AlertContent confirmation(const std::string& question, const std::string& build) {
  return {.message = question,
          .informativeText =
              "Build " + build +
              " will be downloaded and this app will restart — the iPad reconnects by itself a few "
              "seconds later. Best done between presentations, not during one.",
          .buttons = {"Update and Restart", "Later"}};
}

bool isDownloaded(const HttpResult& result) {
  return !result.error && result.response && result.response->status == 200;
}

}  // namespace

void BridgeDelegate::installUpdate() {
  assertMainThread();
  if (!availableUpdate || updateInProgress) return;
  const std::string build = *availableUpdate;
  platform_.application.activateIgnoringOtherApps();
  if (runAlert(confirmation(platform_.texts.updateQuestion, build)) != kAlertFirstButton) {
    return;
  }
  if (updateInProgress) return;  // confirmed in another alert, which came up over this one
  updateInProgress = true;
  prepareDownload(build);
}

UpdatePlan BridgeDelegate::updatePlan() const {
  const int pid = platform_.processInfo.processIdentifier();
  const std::string temporary = platform_.processInfo.temporaryDirectory();
  return {.bundlePath = platform_.bundle.path(),
          .homeDirectory = platform_.processInfo.homeDirectory(),
          .temporaryFolder = temporary,
          .workFolder = temporary + "/" + kWorkFolderPrefix + std::to_string(pid),
          .currentBuild = myVersion(),
          .teamID = teamID,
          .processIdentifier = pid};
}

// What runs on other threads must not touch the delegate, which may have gone: it gets the ports,
// which outlive both.
void BridgeDelegate::prepareDownload(const std::string& build) {
  const auto attempt = std::make_shared<UpdateAttempt>(platform_.processes);
  updateAttempt = attempt;
  platform_.backgroundQueue.after(
      0, [this, main = main_, &files = platform_.files, attempt, plan = updatePlan(), build] {
        prepareUpdate(files, *attempt, plan);
        main.async([this, attempt, plan, build] { downloadUpdate(attempt, plan, build); });
      });
}

void BridgeDelegate::downloadUpdate(const std::shared_ptr<UpdateAttempt>& attempt,
                                    const UpdatePlan& plan, const std::string& build) {
  const std::string zip = plan.workFolder + ".zip";
  HttpRequest request;
  request.url = updateURL("/Torvane-P2P-Mac.zip");
  request.totalTimeout = kLongestDownload;
  request.maxResponseBytes = kMostArchiveBytes;
  request.saveTo = zip;
  const UpdatePorts ports{platform_.files, platform_.codeCheck};
  platform_.http.shared().dataTask(std::move(request), [this, main = main_, ports, attempt, plan,
                                                        zip, build](const HttpResult& result) {
    const auto reason = isDownloaded(result) ? applyUpdate(ports, *attempt, plan, zip, build)
                                             : (result.diskIsFull ? kDiskIsFull : kNotDownloaded);
    ports.files.remove(zip);
    main.async([this, plan, reason] { reason ? updateFailed(*reason) : restart(plan); });
  });
}

void BridgeDelegate::updateFailed(const std::string& reason) {
  assertMainThread();
  updateInProgress = false;
  alert("Helper update not installed.\n\n" + reason);
}

void BridgeDelegate::restart(const UpdatePlan& plan) {
  relaunch(platform_.processes, plan);
  quit();
}

void BridgeDelegate::abandonUpdate() {
  if (const auto attempt = updateAttempt.lock()) attempt->processes.abandon();
}

// What was abandoned ends at once, and tidies up. Where it does not, only an installed copy that is
// being made whole again is waited for.
void BridgeDelegate::awaitUpdate() {
  const auto attempt = updateAttempt.lock();
  if (!attempt) return;
  for (double waited = 0; attempt->isAtWork; waited += kStep) {
    if (waited >= (attempt->isReplacing ? kLongestRepair : kLongestGoodbye)) return;
    platform_.mainQueue.block(kStep);
  }
}

}  // namespace torvane
