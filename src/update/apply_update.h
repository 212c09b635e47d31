#pragma once

#include <functional>
#include <optional>
#include <string>

#include "engine/child_process.h"
#include "engine/file_system.h"

namespace torvane {

inline constexpr const char* kApplicationName = "Torvane P2P Helper.app";   // in the archive
inline constexpr const char* kWorkFolderPrefix = "torvane-helper-update-";  // a process ID follows

// What an update replaces, and where it is prepared.
struct UpdatePlan {
  std::string bundlePath;       // of the copy that runs
  std::string temporaryFolder;  // this user's alone; holds the work folders
  std::string workFolder;       // of this process
  std::string currentBuild;
  std::string teamID;
  int processIdentifier = 0;
};

// Checks a downloaded archive and puts what it holds into the place of the copy that runs, then
// starts the command that opens it once this process has gone. None when that is done; else the
// reason for the user, and the installed copy is as it was. `expecting` is the published build. Any
// thread; blocks while the system's tools run.
//
// `isWanted` is asked, on the same thread, before each step until the installed copy is touched;
// once it says no, nothing more happens.
[[nodiscard]] std::optional<std::string> applyUpdate(FileSystem& files, ProcessLauncher& processes,
                                                     const UpdatePlan& plan,
                                                     const std::string& zipAt,
                                                     const std::string& expecting,
                                                     const std::function<bool()>& isWanted);

// The shell command that waits for a process to end, removes the work folder with the replaced copy
// in it, and opens the new one.
[[nodiscard]] std::string relaunchCommand(const UpdatePlan& plan);

}  // namespace torvane
