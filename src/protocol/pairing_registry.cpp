// Which iPads the user has paired, and what is known of each peer connected now.
// Fields: pairedDevices, registeredKeys, savesAgain, peerKeys, challenges, receivedIDs,
// failedVerifications.
// Ports: UserDefaults.

#include "app/bridge_delegate.h"

namespace torvane {
namespace {

constexpr double kSaveInterval = 5.0;  // until there is room

}  // namespace

bool BridgeDelegate::isPaired(const std::string& deviceKey) const {
  return pairedDevices.count(deviceKey) != 0;
}

bool BridgeDelegate::pair(const std::string& deviceKey, const std::string& name) {
  pairedDevices[deviceKey] = name;
  registeredKeys->insert(deviceKey);
  JsonObject stored;
  for (const auto& [key, deviceName] : pairedDevices) stored[key] = deviceName;
  return retryUnless(platform_.defaults.setObject(pairedKey, std::move(stored)));
}

// Peers connected now keep what they have and go on until they drop, as the user was told.
bool BridgeDelegate::forgetAllPairings() {
  pairedDevices.clear();
  registeredKeys->clear();
  return retryUnless(platform_.defaults.removeObject(pairedKey));
}

bool BridgeDelegate::retryUnless(bool saved) {
  if (!saved && !savesAgain) {
    savesAgain = true;
    main_.after(kSaveInterval, [this] { savePairingsAgain(); });
  }
  return saved;
}

void BridgeDelegate::savePairingsAgain() {
  if (!savesAgain) return;
  savesAgain = false;
  retryUnless(platform_.defaults.save());
}

void BridgeDelegate::admitPeer(const PeerID& peer, const std::string& deviceKey) {
  peerKeys[peer] = deviceKey;
}

void BridgeDelegate::dropPeer(const PeerID& peer) {
  peerKeys.erase(peer);
  challenges.erase(peer);
  receivedIDs.erase(peer);
  failedVerifications.erase(peer);
}

}  // namespace torvane
