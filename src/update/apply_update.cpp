#include "update/apply_update.h"

#include <algorithm>
#include <array>
#include <vector>

#include "engine/run_tool.h"
#include "update/build_number.h"
#include "update/update_checks.h"

namespace torvane {
namespace {

using Reason = std::optional<std::string>;  // none: the step is done

constexpr int kNoSuchProcess = 1;  // the exit status of kill

constexpr const char* kNotUnpacked = "The downloaded file could not be unpacked.";
constexpr const char* kNotAssessed = "The download failed Gatekeeper verification.";
constexpr const char* kNotSigned = "The download is not signed by the expected developer.";
constexpr const char* kWrongVersion =
    "The downloaded version does not match the published one — the site may still be deploying. "
    "Try again in a few minutes.";
constexpr const char* kNotReplaced = "Could not replace the app in /Applications: ";
constexpr const char* kNotInstalled = "Could not install the new copy.";
constexpr const char* kNotWanted = "The update was cancelled.";  // by the program's end

// The process whose work folder, or download, has this name.
std::optional<std::string> workFolderProcess(std::string_view name) {
  constexpr std::string_view kDownload = ".zip";
  if (!name.starts_with(kWorkFolderPrefix)) return std::nullopt;
  name.remove_prefix(std::string_view(kWorkFolderPrefix).size());
  if (name.ends_with(kDownload)) name.remove_suffix(kDownload.size());
  const bool isNumber =
      std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (name.empty() || !isNumber) return std::nullopt;
  return std::string(name);
}

class Installer {
 public:
  Installer(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan)
      : files_(files), processes_(processes), plan_(plan) {}

  Reason unpack(const std::string& zipAt) {
    files_.removeAll(plan_.workFolder);
    // Whoever else may write there could change the application after it has been checked.
    if (!files_.createPrivateFolder(plan_.workFolder)) return kNotUnpacked;
    removeLeavings(OldCopies::keep);
    const std::string zip = plan_.workFolder + "/helper.zip";
    static_cast<void>(files_.move(zipAt, zip, std::nullopt));  // shows at the next step
    if (run("/usr/bin/ditto", {"-x", "-k", zip, plan_.workFolder}).status != 0) return kNotUnpacked;
    const auto links = files_.symbolicLinks(application_);
    if (!files_.isFolder(application_) || !links || !staysInside(*links)) return kNotUnpacked;
    return std::nullopt;
  }

  Reason assess() {
    const ToolResult result = run("/usr/sbin/spctl", {"-a", "-t", "exec", application_});
    if (result.status != 0) return kNotAssessed;
    return std::nullopt;
  }

  Reason checkSigner() {
    const ToolResult result = run("/usr/bin/codesign", {"-dv", "--verbose=2", application_});
    if (result.status != 0 || !isSignedByTeam(result.output, plan_.teamID)) return kNotSigned;
    return std::nullopt;
  }

  Reason checkVersion(const std::string& expecting) {
    const ToolResult result =
        run("/usr/libexec/PlistBuddy",
            {"-c", "Print :CFBundleVersion", application_ + "/Contents/Info.plist"});
    const std::string_view version = trimmedText(result.output);
    const bool isNewer = std::is_gt(compareBuilds(version, plan_.currentBuild));
    if (result.status != 0 || version != expecting || !isNewer) return kWrongVersion;
    return std::nullopt;
  }

  Reason replace() {
    files_.removeAll(original_);  // of an attempt that was cut off
    const auto error = files_.move(plan_.bundlePath, oldCopy_, original_);
    if (error) return kNotReplaced + *error;
    if (run("/usr/bin/ditto", {application_, plan_.bundlePath}).status != 0) {
      putBack();
      return kNotInstalled;
    }
    files_.removeAll(original_);
    removeLeavings(OldCopies::remove);
    return std::nullopt;
  }

  // Anything else between the quotes of the command would be a command itself.
  void relaunch() {
    if ((plan_.workFolder + plan_.bundlePath).find('\'') != std::string::npos) return;
    ProcessLaunch shell;
    shell.executable = "/bin/sh";
    shell.arguments = {"-c", relaunchCommand(plan_)};
    static_cast<void>(processes_.launch(shell, {}));  // else the user opens the new copy
  }

 private:
  enum class OldCopies { keep, remove };

  // From another disk the old copy might not fit back any more: the program that runs keeps the
  // room of its file.
  void putBack() {
    files_.removeAll(plan_.bundlePath);  // half a copy would stand in the way
    const bool hasOriginal = files_.isFolder(original_);
    static_cast<void>(
        files_.move(hasOriginal ? original_ : oldCopy_, plan_.bundlePath, std::nullopt));
    files_.removeAll(hasOriginal ? oldCopy_ : original_);
  }

  // What is left of processes that were killed. An old copy among it may be the only intact one,
  // until a new one has been installed.
  void removeLeavings(OldCopies oldCopies) {
    for (const std::string& name : files_.names(plan_.temporaryFolder)) {
      const auto process = workFolderProcess(name);
      if (!process || *process == std::to_string(plan_.processIdentifier)) continue;
      const std::string path = plan_.temporaryFolder + "/" + name;
      if (oldCopies == OldCopies::keep && files_.isFolder(path + "/old.app")) continue;
      if (run("/bin/kill", {"-0", *process}).status == kNoSuchProcess) files_.removeAll(path);
    }
  }

  ToolResult run(const std::string& tool, const std::vector<std::string>& arguments) {
    return runTool(processes_, tool, arguments);
  }

  FileSystem& files_;
  ProcessLauncher& processes_;
  const UpdatePlan& plan_;
  const std::string application_ = plan_.workFolder + "/" + kApplicationName;
  const std::string oldCopy_ = plan_.workFolder + "/old.app";
  const std::string original_ = plan_.bundlePath + ".old";  // while oldCopy_ is on another disk
};

}  // namespace

std::string relaunchCommand(const UpdatePlan& plan) {
  return "while /bin/kill -0 " + std::to_string(plan.processIdentifier) +
         " 2>/dev/null; do sleep 0.2; done; rm -rf '" + plan.workFolder + "'; open '" +
         plan.bundlePath + "'";
}

std::optional<std::string> applyUpdate(FileSystem& files, ProcessLauncher& processes,
                                       const UpdatePlan& plan, const std::string& zipAt,
                                       const std::string& expecting,
                                       const std::function<bool()>& isWanted) {
  Installer installer(files, processes, plan);
  const std::array<std::function<Reason()>, 5> steps{
      [&] { return installer.unpack(zipAt); }, [&] { return installer.assess(); },
      [&] { return installer.checkSigner(); }, [&] { return installer.checkVersion(expecting); },
      [&] { return installer.replace(); }};
  for (const auto& step : steps) {
    if (!isWanted()) return kNotWanted;
    if (auto reason = step()) return reason;
  }
  installer.relaunch();
  return std::nullopt;
}

}  // namespace torvane
