#pragma once

#include <optional>
#include <string>

#include "ports/code_check.h"
#include "ports/file_system.h"
#include "update/update_attempt.h"
#include "update/update_plan.h"

namespace torvane {

inline constexpr const char* kDiskIsFull =
    "The disk is full. Make some room on it and try again from the menu.";

// What an update needs of a desktop.
struct UpdatePorts {
  FileSystem& files;
  const CodeCheck& codeCheck;
};

// Makes the folder for the download, and room for it: what earlier attempts left is removed. Any
// thread; blocks.
void prepareUpdate(FileSystem& files, UpdateAttempt& attempt, const UpdatePlan& plan);

// Checks a downloaded archive and puts what it holds into the place of the copy that runs. None
// when that is done; else the reason for the user, and the installed copy is as it was. `expecting`
// is the published build. Any thread; blocks while the system's tools run.
//
// Once the attempt is abandoned it ends as soon as can be, with the installed copy whole: the new
// one when that was finished by then, else the old one. Unless it succeeds nothing is left of it.
[[nodiscard]] std::optional<std::string> applyUpdate(const UpdatePorts& ports,
                                                     UpdateAttempt& attempt, const UpdatePlan& plan,
                                                     const std::string& zipAt,
                                                     const std::string& expecting);

// Starts the command that opens the new copy once this process has gone.
void relaunch(ProcessLauncher& processes, const UpdatePlan& plan);

// That command, for a shell: it waits for a process to end, removes the work folder with the
// replaced copy in it, and opens the new one.
[[nodiscard]] std::string relaunchCommand(const UpdatePlan& plan);

}  // namespace torvane
