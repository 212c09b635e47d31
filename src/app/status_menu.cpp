// The menu behind the status icon, rebuilt from the current state each time it opens.
// Ports: LoginItem, and through the parts it asks, Bundle and PrivacyDatabase.

#include "app/status_menu.h"

#include <algorithm>
#include <utility>

#include "app/bridge_delegate.h"
#include "app/install_hygiene.h"

namespace torvane {
namespace {

using Menu = std::vector<MenuItem>;

MenuItem makeItem(std::string title, std::function<void()> action) {
  return {.title = std::move(title), .action = std::move(action)};
}

MenuItem information(std::string title, int indentationLevel = 0) {
  return {.title = std::move(title), .action = {}, .indentationLevel = indentationLevel};
}

MenuItem separator() {
  return {.title = {}, .action = {}, .isSeparator = true};
}

void addAddresses(Menu& menu, const std::vector<std::string>& addresses) {
  if (addresses.empty()) return;
  if (addresses.size() == 1) {
    menu.push_back(information("Connect by address: " + addresses.front()));
    return;
  }
  menu.push_back(information("Connect by address:"));
  for (const auto& address : addresses) menu.push_back(information(address, 1));
}

void addLinkStatus(Menu& menu, const StatusMenuInputs& inputs) {
  if (inputs.advertiseError) {
    menu.push_back(information("Not advertising: " + *inputs.advertiseError));
    addAddresses(menu, inputs.addresses);
  } else if (!inputs.connectedPeers.empty()) {
    menu.push_back(information("Connected:"));
    for (const auto& name : inputs.connectedPeers) menu.push_back(information(name, 1));
  } else {
    menu.push_back(information("Advertising as “" + inputs.displayName + "” — open the iPad app"));
    addAddresses(menu, inputs.addresses);
  }
}

// A quiet answer to a question that the show itself raises.
void addInkHint(Menu& menu, const StatusMenuInputs& inputs) {
  if (!inputs.hasInkHardEdges) return;
  menu.push_back(information("Ink has hard edges: this desktop has no compositor"));
}

void addEngine(Menu& menu, const DesktopTexts& texts, const StatusMenuInputs& inputs,
               const StatusMenuActions& actions) {
  if (inputs.serverRunning) {
    menu.push_back(information(texts.engineRunning));
    menu.push_back(makeItem("Stop Server", actions.stopServer));
  } else {
    menu.push_back(information(texts.engineNotRunning));
    menu.push_back(makeItem("Start Server", actions.startServer));
  }
}

void addPairedDevices(Menu& menu, std::vector<std::string> names,
                      const StatusMenuActions& actions) {
  if (names.empty()) return;
  std::sort(names.begin(), names.end());
  menu.push_back(information("Paired devices:"));
  for (auto& name : names) menu.push_back(information(std::move(name), 1));
  menu.push_back(makeItem("Forget Paired Devices…", actions.forgetPairedDevices));
  menu.push_back(separator());
}

void addUpdate(Menu& menu, const StatusMenuInputs& inputs, const StatusMenuActions& actions) {
  if (inputs.availableUpdate && inputs.updateInProgress) {
    menu.push_back(information("Updating…"));
  } else if (inputs.availableUpdate) {
    menu.push_back(
        makeItem("Update Helper to Build " + *inputs.availableUpdate + "…", actions.installUpdate));
  } else if (inputs.isInstalledCopy) {
    menu.push_back(makeItem("Check for Updates", actions.checkForUpdatesClicked));
  }
}

}  // namespace

std::vector<MenuItem> statusMenu(const DesktopTexts& texts, const StatusMenuInputs& inputs,
                                 const StatusMenuActions& actions) {
  Menu menu;
  addLinkStatus(menu, inputs);
  addInkHint(menu, inputs);
  menu.push_back(separator());
  addEngine(menu, texts, inputs, actions);
  menu.push_back(separator());
  addPairedDevices(menu, inputs.pairedNames, actions);
  addUpdate(menu, inputs, actions);
  if (!inputs.hasFullDiskAccess) {
    menu.push_back(makeItem("Stop File-Access Prompts…", actions.offerFullDiskAccess));
  }
  menu.push_back(makeItem("How Does This Work?", actions.showHowItWorks));
  menu.push_back(makeItem("Launch at Login", actions.toggleLaunchAtLogin));
  menu.back().isChecked = inputs.launchesAtLogin;
  menu.push_back(makeItem("Quit", actions.quit));
  return menu;
}

StatusMenuInputs BridgeDelegate::statusMenuInputs() const {
  return {.advertiseError = sessions_.advertisingError(),
          .addresses = platform_.peerLink.addresses(),
          .connectedPeers = sessions_.connectedNames(),
          .displayName = sessions_.displayName(),
          .hasInkHardEdges = overlay_.hasHardEdges(),
          .serverRunning = engine_.isRunning(),
          .pairedNames = registry_.names(),
          .availableUpdate = updater_.available(),
          .updateInProgress = updater_.isInProgress(),
          .isInstalledCopy = updater_.isInstalledCopy(),
          .hasFullDiskAccess = hasFullDiskAccess(platform_),
          .launchesAtLogin = platform_.loginItem.status() == LoginItemStatus::enabled};
}

std::vector<MenuItem> BridgeDelegate::menuNeedsUpdate() {
  assertMainThread();
  return statusMenu(platform_.texts, statusMenuInputs(),
                    {.startServer = [this] { engine_.startServer(); },
                     .stopServer = [this] { engine_.stopServer(); },
                     .forgetPairedDevices = [this] { invitations_.forgetPairedDevices(); },
                     .installUpdate = [this] { updater_.installUpdate(); },
                     .checkForUpdatesClicked = [this] { updater_.checkForUpdatesClicked(); },
                     .offerFullDiskAccess = [this] { offerFullDiskAccess(); },
                     .showHowItWorks = [this] { showHowItWorks(); },
                     .toggleLaunchAtLogin = [this] { toggleLaunchAtLogin(); },
                     .quit = [this] { quit(); }});
}

}  // namespace torvane
