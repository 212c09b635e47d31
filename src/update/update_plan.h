#pragma once

#include <string>

namespace torvane {

inline constexpr const char* kApplicationName = "Torvane P2P Helper.app";   // in the archive
inline constexpr const char* kWorkFolderPrefix = "torvane-helper-update-";  // a process ID follows
inline constexpr const char* kSetAsideInfix = ".before-update-";            // likewise
inline constexpr const char* kOldCopyName = "old.app";                      // in the work folder

// What an update replaces, and where it is prepared.
struct UpdatePlan {
  std::string bundlePath;       // of the copy that runs
  std::string homeDirectory;    // the user's
  std::string temporaryFolder;  // this user's alone; holds the work folders
  std::string workFolder;       // of this process
  std::string currentBuild;
  std::string teamID;
  int processIdentifier = 0;

  [[nodiscard]] std::string oldCopy() const { return workFolder + "/" + kOldCopyName; }
  // Beside the installed copy, where the work folder is on another disk.
  [[nodiscard]] std::string setAside() const {
    return bundlePath + kSetAsideInfix + std::to_string(processIdentifier);
  }
};

}  // namespace torvane
