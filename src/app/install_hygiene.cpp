// Housekeeping of the installed copy at start-up.
// Ports: PrivacyDatabase.

#include "app/bridge_delegate.h"

namespace torvane {

void BridgeDelegate::retireOldNamedApp() {}

void BridgeDelegate::tccSelfHealIfReplaced() {}

bool BridgeDelegate::hasFullDiskAccess() const {
  return platform_.privacyDatabase.canRead(platform_.processInfo.homeDirectory() +
                                           "/Library/Application Support/com.apple.TCC/TCC.db");
}

}  // namespace torvane
