#pragma once

#include <string>

namespace torvane {

// Moves the engine's log to `logDirectory` from where it was kept at first, below "Library" in the
// home folder, and removes the folders that are empty then. Nothing happens where no log lies
// there; a log that is in its new place already stays.
void moveFormerLog(const std::string& homeDirectory, const std::string& logDirectory);

}  // namespace torvane
