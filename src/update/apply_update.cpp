#include "update/apply_update.h"

#include <array>
#include <functional>
#include <utility>

#include "engine/run_tool.h"
#include "update/build_number.h"
#include "update/leavings.h"
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

// A full disk is something that the user can do something about.
std::string explained(const char* reason, const ToolResult& tool) {
  return saysDiskIsFull(tool.output) ? std::string(reason) + "\n\n" + kDiskIsFull : reason;
}

class Installer {
 public:
  Installer(const UpdatePorts& ports, UpdateAttempt& attempt, const UpdatePlan& plan)
      : files_(ports.files), codeCheck_(ports.codeCheck), attempt_(attempt), plan_(plan) {}

  Reason unpack(const std::string& zipAt) {
    tidyUp();
    // Whoever else may write there could change the application after it has been checked.
    if (!files_.createPrivateFolder(plan_.workFolder, plan_.homeDirectory)) return kNotUnpacked;
    const std::string zip = plan_.workFolder + "/helper.zip";
    static_cast<void>(files_.move(zipAt, zip, {}));  // shows at the next step
    const ToolResult result = run("/usr/bin/ditto", {"-x", "-k", zip, plan_.workFolder});
    if (result.status != 0) return explained(kNotUnpacked, result);
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
    if (!codeCheck_.meets(application_, teamRequirement(plan_.teamID))) return kNotSigned;
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
    const HeldFlag replacing(attempt_.isReplacing);
    const auto isWanted = [this] { return !attempt_.processes.isAbandoned(); };
    if (!isWanted()) return kNotWanted;
    if (files_.isFolder(plan_.bundlePath)) files_.removeAll(plan_.setAside());  // of this number
    const auto error = files_.move(plan_.bundlePath, plan_.oldCopy(), {plan_.setAside(), isWanted});
    if (error) return kNotReplaced + *error;
    const ToolResult result = run("/usr/bin/ditto", {application_, plan_.bundlePath});
    if (result.status != 0) {
      putBack();
      return explained(kNotInstalled, result);
    }
    files_.removeAll(plan_.setAside());
    removeOldCopies(files_, attempt_.processes, plan_);
    return std::nullopt;
  }

  void tidyUp() {
    if (isOldCopyNeeded_) {
      removeAllButOldCopy(files_, plan_.workFolder);
    } else {
      files_.removeAll(plan_.workFolder);
    }
  }

 private:
  // From another disk the old copy might not fit back any more: the program that runs keeps the
  // room of its file.
  void putBack() {
    files_.removeAll(plan_.bundlePath);  // half a copy would stand in the way
    const bool isSetAside = files_.isFolder(plan_.setAside());
    const std::string from = isSetAside ? plan_.setAside() : plan_.oldCopy();
    isOldCopyNeeded_ = files_.move(from, plan_.bundlePath, {}).has_value();
  }

  ToolResult run(const std::string& tool, const std::vector<std::string>& arguments) {
    return runTool(attempt_.processes, tool, arguments);
  }

  FileSystem& files_;
  const CodeCheck& codeCheck_;
  UpdateAttempt& attempt_;
  const UpdatePlan& plan_;
  const std::string application_ = plan_.workFolder + "/" + kApplicationName;
  bool isOldCopyNeeded_ = !files_.isFolder(plan_.bundlePath);  // it could not be put back
};

}  // namespace

void prepareUpdate(FileSystem& files, UpdateAttempt& attempt, const UpdatePlan& plan) {
  const HeldFlag working(attempt.isAtWork);
  static_cast<void>(files.createPrivateFolder(plan.temporaryFolder, plan.homeDirectory));
  removeAllButOldCopy(files, plan.workFolder);
  files.removeAll(plan.workFolder + ".zip");
  removeLeavings(files, attempt.processes, plan);
}

std::optional<std::string> applyUpdate(const UpdatePorts& ports, UpdateAttempt& attempt,
                                       const UpdatePlan& plan, const std::string& zipAt,
                                       const std::string& expecting) {
  const HeldFlag working(attempt.isAtWork);
  Installer installer(ports, attempt, plan);
  const std::array<std::function<Reason()>, 5> steps{
      [&] { return installer.unpack(zipAt); }, [&] { return installer.assess(); },
      [&] { return installer.checkSigner(); }, [&] { return installer.checkVersion(expecting); },
      [&] { return installer.replace(); }};
  Reason reason;
  for (auto step = steps.begin(); !reason && step != steps.end(); ++step) {
    reason = attempt.processes.isAbandoned() ? kNotWanted : (*step)();
  }
  if (reason || attempt.processes.isAbandoned()) installer.tidyUp();
  return reason;
}

// Anything else between the quotes of the command would be a command itself.
void relaunch(ProcessLauncher& processes, const UpdatePlan& plan) {
  if ((plan.workFolder + plan.bundlePath).find('\'') != std::string::npos) return;
  ProcessLaunch shell;
  shell.executable = "/bin/sh";
  shell.arguments = {"-c", relaunchCommand(plan)};
  static_cast<void>(processes.launch(shell, {}));  // else the user opens the new copy
}

std::string relaunchCommand(const UpdatePlan& plan) {
  return "while /bin/kill -0 " + std::to_string(plan.processIdentifier) +
         " 2>/dev/null; do sleep 0.2; done; rm -rf '" + plan.workFolder + "'; open '" +
         plan.bundlePath + "'";
}

}  // namespace torvane
