// The search for a newer build.
// Fields: availableUpdate. Ports: Bundle.

#include "app/bridge_delegate.h"

namespace torvane {

std::string BridgeDelegate::myVersion() const {
  const auto version = platform_.bundle.infoValue("CFBundleVersion");
  if (!version || !version->is_string()) return "0";
  return {version->get_string().data(), version->get_string().size()};
}

bool BridgeDelegate::isInstalledCopy() const {
  return platform_.bundle.path().starts_with("/Applications/");
}

void BridgeDelegate::checkForUpdate(bool /*manual*/) {}

void BridgeDelegate::checkForUpdateTick() {
  checkForUpdate(false);
}

void BridgeDelegate::checkForUpdatesClicked() {
  checkForUpdate(true);
}

}  // namespace torvane
