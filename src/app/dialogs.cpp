// Messages to the user that belong to no other slice.
// Ports: Alerts.

#include "app/bridge_delegate.h"

namespace torvane {

void BridgeDelegate::alert(const std::string& text) {
  assertMainThread();
  platform_.alerts.runModal({.message = "Torvane P2P Helper", .informativeText = text});
}

void BridgeDelegate::offerFullDiskAccess() {}

}  // namespace torvane
