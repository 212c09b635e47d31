#include "update/leavings.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

#include "engine/run_tool.h"

namespace torvane {
namespace {

constexpr int kNoSuchProcess = 1;  // the exit status of kill
constexpr std::string_view kDownload = ".zip";

std::string folderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

// The process whose number stands behind the prefix, and nothing else.
std::optional<std::string> processOf(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  const bool isNumber =
      std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (name.empty() || !isNumber) return std::nullopt;
  return std::string(name);
}

using Remove = std::function<void(const std::string& path)>;

class Search {
 public:
  Search(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan)
      : files_(files), processes_(processes), plan_(plan) {}

  void inTemporaryFolder(const Remove& remove) {
    for (std::string name : files_.names(plan_.temporaryFolder)) {
      const std::string path = plan_.temporaryFolder + "/" + name;
      if (name.ends_with(kDownload)) name.resize(name.size() - kDownload.size());
      if (isLeaving(name, kWorkFolderPrefix)) remove(path);
    }
  }

  void besideTheInstalledCopy(const Remove& remove) {
    const std::string folder = folderOf(plan_.bundlePath);
    const std::string prefix = plan_.bundlePath.substr(folder.size() + 1) + kSetAsideInfix;
    for (const std::string& name : files_.names(folder)) {
      const std::string path = folder + "/" + name;
      if (files_.isFolder(path) && isLeaving(name, prefix)) remove(path);
    }
  }

 private:
  bool isLeaving(std::string_view name, std::string_view prefix) {
    const auto process = processOf(name, prefix);
    if (!process || *process == std::to_string(plan_.processIdentifier)) return false;
    return runTool(processes_, "/bin/kill", {"-0", *process}).status == kNoSuchProcess;
  }

  FileSystem& files_;
  ProcessLauncher& processes_;
  const UpdatePlan& plan_;
};

}  // namespace

void removeLeavings(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan) {
  Search(files, processes, plan).inTemporaryFolder([&](const std::string& path) {
    removeAllButOldCopy(files, path);
  });
}

void removeOldCopies(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan) {
  Search search(files, processes, plan);
  const Remove all = [&](const std::string& path) { files.removeAll(path); };
  search.inTemporaryFolder(all);
  search.besideTheInstalledCopy(all);
}

void removeAllButOldCopy(FileSystem& files, const std::string& workFolder) {
  if (!files.isFolder(workFolder + "/" + kOldCopyName)) {
    files.removeAll(workFolder);
    return;
  }
  for (const std::string& name : files.names(workFolder)) {
    if (name != kOldCopyName) files.removeAll(workFolder + "/" + name);
  }
}

}  // namespace torvane
