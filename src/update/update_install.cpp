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
  if (platform_.alerts.runModal(confirmation(platform_.texts.updateQuestion, build)) !=
      kAlertFirstButton) {
    return;
  }
  if (updateInProgress) return;  // confirmed in another alert, which came up over this one
  updateInProgress = true;
  downloadUpdate(build);
}

UpdatePlan BridgeDelegate::updatePlan() const {
  const int pid = platform_.processInfo.processIdentifier();
  const std::string temporary = platform_.processInfo.temporaryDirectory();
  return {.bundlePath = platform_.bundle.path(),
          .temporaryFolder = temporary,
          .workFolder = temporary + "/" + kWorkFolderPrefix + std::to_string(pid),
          .currentBuild = myVersion(),
          .teamID = teamID,
          .processIdentifier = pid};
}

// The download's thread must not touch the delegate, which may have gone: it gets the ports, which
// outlive both.
void BridgeDelegate::downloadUpdate(const std::string& build) {
  const UpdatePlan plan = updatePlan();
  const std::string zip = plan.workFolder + ".zip";
  FileSystem& files = platform_.files;
  static_cast<void>(files.createPrivateFolder(plan.temporaryFolder));
  files.remove(zip);
  HttpRequest request;
  request.url = updateURL("/Torvane-P2P-Mac.zip");
  request.totalTimeout = kLongestDownload;
  request.maxResponseBytes = kMostArchiveBytes;
  request.saveTo = zip;
  platform_.http.shared().dataTask(
      std::move(request),
      [this, main = main_, plan, zip, build, &files, &processes = platform_.processes,
       alive = std::weak_ptr(lifetime_)](const HttpResult& result) {
        std::optional<std::string> reason = kNotDownloaded;
        if (isDownloaded(result)) {
          reason = applyUpdate(files, processes, plan, zip, build,
                               [&alive] { return !alive.expired(); });
        }
        files.remove(zip);
        main.async([this, reason] { reason ? updateFailed(*reason) : quit(); });
      });
}

void BridgeDelegate::updateFailed(const std::string& reason) {
  assertMainThread();
  updateInProgress = false;
  alert("Helper update not installed.\n\n" + reason);
}

}  // namespace torvane
