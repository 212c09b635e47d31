// The status item's picture and tooltip.
// Fields: statusItem. Ports: StatusItem.

#include "app/status_icon.h"

#include "app/bridge_delegate.h"

namespace torvane {

StatusIcon statusIcon(const std::vector<std::string>& connectedPeers, bool serverRunning) {
  StatusIcon icon;
  icon.accessibilityDescription = "Torvane P2P Helper";
  icon.appearsDisabled = !serverRunning;
  if (connectedPeers.empty()) {
    icon.symbolName = "dot.radiowaves.right";
    icon.toolTip = "Torvane P2P Helper: waiting for the iPad app";
    return icon;
  }
  std::string names;
  for (const auto& name : connectedPeers) names += (names.empty() ? "" : ", ") + name;
  icon.symbolName = "dot.radiowaves.left.and.right";
  icon.toolTip = "Torvane P2P Helper: iPad connected (" + names + ")";
  return icon;
}

void BridgeDelegate::updateIcon() {
  assertMainThread();
  if (statusItem) statusItem->setIcon(statusIcon(sessions_.connectedNames(), engine_.isRunning()));
}

}  // namespace torvane
