#pragma once

#include <string>

#include "ports/alert.h"

namespace torvane {

// What the program says in other words on each kind of desktop, in whole sentences. What it says
// everywhere alike stands where it is said.
struct DesktopTexts {
  AlertContent welcome;     // once, at the first launch
  AlertContent howItWorks;  // "How Does This Work?"

  // Whether to let a new device in. `name` is what to call it, as it is to be read.
  AlertContent (*pairing)(const std::string& name);

  std::string engineRunning;  // lines of the menu
  std::string engineNotRunning;
  std::string scriptMissing;

  // The engine ended with this exit status just after its start, and printed `explanation`.
  std::string (*engineStopped)(int status, const std::string& explanation,
                               const std::string& logPath);

  std::string updateQuestion;    // above what an update does
  std::string namelessComputer;  // what devices call one that has no name
};

extern const DesktopTexts kMacTexts;
extern const DesktopTexts kLinuxTexts;

}  // namespace torvane
