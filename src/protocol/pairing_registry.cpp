// Which iPads the user has paired, and what is known of each peer connected now.
// Fields: pairedDevices, registeredKeys, peerKeys, challenges, receivedIDs, failedVerifications.
// Ports: UserDefaults.

#include "app/bridge_delegate.h"

namespace torvane {

bool BridgeDelegate::isPaired(const std::string& deviceKey) const {
  return pairedDevices.count(deviceKey) != 0;
}

void BridgeDelegate::pair(const std::string& deviceKey, const std::string& name) {
  pairedDevices[deviceKey] = name;
  registeredKeys->insert(deviceKey);
  JsonObject stored;
  for (const auto& [key, deviceName] : pairedDevices) stored[key] = deviceName;
  platform_.defaults.setObject(pairedKey, std::move(stored));
}

// Peers connected now keep what they have and go on until they drop, as the user was told.
void BridgeDelegate::forgetAllPairings() {
  pairedDevices.clear();
  registeredKeys->clear();
  platform_.defaults.removeObject(pairedKey);
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
