#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace torvane {

// The desktop entry that makes a session start `program`, an absolute path, at login.
[[nodiscard]] std::string autostartEntry(const std::string& program);

// What such a file says, whoever wrote it.
struct AutostartEntry {
  std::vector<std::string> command;  // the program and its arguments; empty when there is none
  bool isSwitchedOff = false;        // the user, or the desktop for the user, wants it not started
};

[[nodiscard]] AutostartEntry parseAutostartEntry(std::string_view text);

}  // namespace torvane
