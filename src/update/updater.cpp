#include "update/updater.h"

#include "update/apply_update.h"
#include "update/build_number.h"

namespace torvane {
namespace {

constexpr double kCheckTimeout = 15.0;
constexpr double kLongestCheck = 60.0;  // for a server that drips
constexpr std::uint64_t kMostVersionBytes = 65536;

constexpr const char* kUnreachable =
    "Couldn't reach the update server — check the internet connection and try again.";

// The build that the site published; none for whatever else came, or did not.
std::optional<std::string> publishedBuild(const HttpResult& result) {
  if (result.error || !result.response || result.response->status != 200) return std::nullopt;
  return parseBuildNumber(result.body);
}

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

const char* const Updater::updateBase = TORVANE_UPDATE_BASE;

Updater::Updater(const Ports& ports, const MainHop& main, UserDialogs& dialogs, Host& host)
    : ports_(ports), main_(main), dialogs_(dialogs), host_(host) {}

bool Updater::isInstalledCopy() const {
  return ports_.bundle.path().starts_with("/Applications/");
}

// The time only defeats caches on the way.
std::string Updater::updateURL(const std::string& file) const {
  const auto now = static_cast<std::int64_t>(ports_.clock.unixTime());
  return updateBase + file + "?t=" + std::to_string(now);
}

void Updater::checkForUpdate(bool manual) {
  if (!isInstalledCopy()) return;
  HttpRequest request;
  request.url = updateURL("/version.txt");
  request.idleTimeout = kCheckTimeout;
  request.totalTimeout = kLongestCheck;
  request.maxResponseBytes = kMostVersionBytes;
  ports_.http.shared().dataTask(
      std::move(request),
      [this, main = main_, manual, current = buildOf(ports_.bundle)](const HttpResult& result) {
        main.async([this, manual, current, latest = publishedBuild(result)] {
          updateCheckDidEnd(manual, current, latest);
        });
      });
}

void Updater::updateCheckDidEnd(bool manual, const std::string& current,
                                const std::optional<std::string>& latest) {
  if (!latest) {
    if (manual) dialogs_.alert(kUnreachable);
    return;
  }
  const bool isNewer = std::is_gt(compareBuilds(*latest, current));
  availableUpdate = isNewer ? latest : std::nullopt;
  if (!manual) return;
  if (isNewer) {
    installUpdate();
  } else {
    dialogs_.alert("You're up to date — build " + current + " is the latest.");
  }
}

void Updater::checkForUpdateTick() {
  checkForUpdate(false);
}

void Updater::checkForUpdatesClicked() {
  checkForUpdate(true);
}

void Updater::installUpdate() {
  if (!availableUpdate || updateInProgress) return;
  const std::string build = *availableUpdate;
  ports_.application.activateIgnoringOtherApps();
  if (dialogs_.runAlert(confirmation(ports_.texts.updateQuestion, build)) != kAlertFirstButton) {
    return;
  }
  if (updateInProgress) return;  // confirmed in another alert, which came up over this one
  updateInProgress = true;
  prepareDownload(build);
}

UpdatePlan Updater::updatePlan() const {
  const int pid = ports_.processInfo.processIdentifier();
  const std::string temporary = ports_.processInfo.temporaryDirectory();
  return {.bundlePath = ports_.bundle.path(),
          .homeDirectory = ports_.processInfo.homeDirectory(),
          .temporaryFolder = temporary,
          .workFolder = temporary + "/" + kWorkFolderPrefix + std::to_string(pid),
          .currentBuild = buildOf(ports_.bundle),
          .teamID = teamID,
          .processIdentifier = pid};
}

// What runs on other threads must not touch the delegate, which may have gone: it gets the ports,
// which outlive both.
void Updater::prepareDownload(const std::string& build) {
  const auto attempt = std::make_shared<UpdateAttempt>(ports_.processes);
  updateAttempt = attempt;
  ports_.backgroundQueue.after(
      0, [this, main = main_, &files = ports_.files, attempt, plan = updatePlan(), build] {
        prepareUpdate(files, *attempt, plan);
        main.async([this, attempt, plan, build] { downloadUpdate(attempt, plan, build); });
      });
}

void Updater::downloadUpdate(const std::shared_ptr<UpdateAttempt>& attempt, const UpdatePlan& plan,
                             const std::string& build) {
  const std::string zip = plan.workFolder + ".zip";
  HttpRequest request;
  request.url = updateURL("/Torvane-P2P-Mac.zip");
  request.totalTimeout = kLongestDownload;
  request.maxResponseBytes = kMostArchiveBytes;
  request.saveTo = zip;
  const UpdatePorts ports{ports_.files, ports_.codeCheck};
  ports_.http.shared().dataTask(std::move(request), [this, main = main_, ports, attempt, plan, zip,
                                                     build](const HttpResult& result) {
    const auto reason = isDownloaded(result) ? applyUpdate(ports, *attempt, plan, zip, build)
                                             : (result.diskIsFull ? kDiskIsFull : kNotDownloaded);
    ports.files.remove(zip);
    main.async([this, plan, reason] { reason ? updateFailed(*reason) : restart(plan); });
  });
}

void Updater::updateFailed(const std::string& reason) {
  updateInProgress = false;
  dialogs_.alert("Helper update not installed.\n\n" + reason);
}

void Updater::restart(const UpdatePlan& plan) {
  relaunch(ports_.processes, plan);
  host_.quit();
}

void Updater::abandon() {
  if (const auto attempt = updateAttempt.lock()) attempt->processes.abandon();
}

// What was abandoned ends at once, and tidies up. Where it does not, only an installed copy that is
// being made whole again is waited for.
void Updater::awaitEnd() {
  const auto attempt = updateAttempt.lock();
  if (!attempt) return;
  for (double waited = 0; attempt->isAtWork; waited += kStep) {
    if (waited >= (attempt->isReplacing ? kLongestRepair : kLongestGoodbye)) return;
    ports_.mainQueue.block(kStep);
  }
}

}  // namespace torvane
