#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ports/desktop_texts.h"
#include "ports/status_item.h"

namespace torvane {

// All that the menu shows.
struct StatusMenuInputs {
  std::optional<std::string> advertiseError;
  std::vector<std::string> addresses;       // by which devices can connect
  std::vector<std::string> connectedPeers;  // display names, in order
  std::string displayName;                  // this computer's, as iPads see it
  bool hasInkHardEdges = false;
  bool serverRunning = false;
  std::vector<std::string> pairedNames;  // in any order
  std::optional<std::string> availableUpdate;
  bool updateInProgress = false;
  bool isInstalledCopy = false;
  bool hasFullDiskAccess = false;
  bool launchesAtLogin = false;
};

// What its commands do.
struct StatusMenuActions {
  std::function<void()> startServer;
  std::function<void()> stopServer;
  std::function<void()> forgetPairedDevices;
  std::function<void()> installUpdate;
  std::function<void()> checkForUpdatesClicked;
  std::function<void()> offerFullDiskAccess;
  std::function<void()> showHowItWorks;
  std::function<void()> toggleLaunchAtLogin;
  std::function<void()> quit;
};

[[nodiscard]] std::vector<MenuItem> statusMenu(const DesktopTexts& texts,
                                               const StatusMenuInputs& inputs,
                                               const StatusMenuActions& actions);

}  // namespace torvane
