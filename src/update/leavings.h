#pragma once

#include "ports/child_process.h"
#include "ports/file_system.h"
#include "update/update_plan.h"

namespace torvane {

// What earlier attempts left whose processes ended in the middle of them. It is known by its names;
// nothing else is touched, and nothing of a process that may still run. Any thread; both block.

// All but the old copies, one of which may be the only intact one.
void removeLeavings(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan);

// The old copies too: a new one stands.
void removeOldCopies(FileSystem& files, ProcessLauncher& processes, const UpdatePlan& plan);

// A work folder with what it holds, but for an old copy.
void removeAllButOldCopy(FileSystem& files, const std::string& workFolder);

}  // namespace torvane
