#include "update/apply_update.h"

#include <array>
#include <vector>

#include "engine/run_tool.h"
#include "update/build_number.h"
#include "update/update_checks.h"

namespace torvane {
namespace {

using Reason = std::optional<std::string>;  // none: the step is done

constexpr const char* kNotUnpacked = "The downloaded file could not be unpacked.";
constexpr const char* kNotAssessed = "The download failed Gatekeeper verification.";
constexpr const char* kNotSigned = "The download is not signed by the expected developer.";
constexpr const char* kWrongVersion =
    "The downloaded version does not match the published one — the site may still be deploying. "
    "Try again in a few minutes.";
constexpr const char* kNotReplaced = "Could not replace the app in /Applications: ";
constexpr const char* kNotInstalled = "Could not install the new copy.";
constexpr const char* kNotWanted = "The update was cancelled.";  // by the program's end

class Installer {
 public:
  Installer(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan)
      : files_(files), processes_(processes), plan_(plan) {}

  Reason unpack(const std::string& zipAt) {
    files_.removeAll(plan_.workFolder);
    // Whoever else may write there could change the application after it has been checked.
    if (!files_.createPrivateFolder(plan_.workFolder)) return kNotUnpacked;
    const std::string zip = plan_.workFolder + "/helper.zip";
    static_cast<void>(files_.move(zipAt, zip));  // shows at the next step
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
    if (const auto error = files_.move(plan_.bundlePath, oldCopy_)) return kNotReplaced + *error;
    if (run("/usr/bin/ditto", {application_, plan_.bundlePath}).status == 0) return std::nullopt;
    files_.removeAll(plan_.bundlePath);  // half a copy would stand in the way
    static_cast<void>(files_.move(oldCopy_, plan_.bundlePath));
    return kNotInstalled;
  }

  void relaunch() {
    ProcessLaunch shell;
    shell.executable = "/bin/sh";
    shell.arguments = {"-c", relaunchCommand(plan_)};
    static_cast<void>(processes_.launch(shell, {}));  // else the user opens the new copy
  }

 private:
  ToolResult run(const std::string& tool, const std::vector<std::string>& arguments) {
    return runTool(processes_, tool, arguments);
  }

  FileSystem& files_;
  ProcessLauncher& processes_;
  const UpdatePlan& plan_;
  const std::string application_ = plan_.workFolder + "/" + kApplicationName;
  const std::string oldCopy_ = plan_.workFolder + "/old.app";
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
