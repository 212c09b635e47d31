// Construction, and what every slice of the delegate shares.

#include "app/bridge_delegate.h"

#include <sodium.h>

#include <cassert>

namespace torvane {
namespace {

std::map<std::string, std::string> loadPairedDevices(const UserDefaults& defaults) {
  const auto stored = defaults.object(BridgeDelegate::pairedKey);
  const auto* dictionary = stored ? stored->if_object() : nullptr;
  if (dictionary == nullptr) return {};
  std::map<std::string, std::string> devices;
  for (const auto& entry : *dictionary) {
    const auto* name = entry.value().if_string();
    if (name == nullptr) return {};  // one bad value makes the whole dictionary untrustworthy
    devices.emplace(entry.key(), *name);
  }
  return devices;
}

}  // namespace

BridgeDelegate::BridgeDelegate(Platform& platform)
    : pairedDevices(loadPairedDevices(platform.defaults)),
      peerID(platform.peerLink.makePeerID(
          platform.processInfo.hostName().value_or(platform.texts.namelessComputer))),
      platform_(platform),
      engineLog_(platform.files, platform.processInfo.logDirectory()),
      main_(platform.mainQueue, lifetime_),
      turns_([this](PeerTurns::Work work) { main_.async(std::move(work)); }) {
  const int ready = sodium_init();
  assert(ready >= 0);
  static_cast<void>(ready);
  for (const auto& [deviceKey, name] : pairedDevices) registeredKeys->insert(deviceKey);
}

BridgeDelegate::~BridgeDelegate() {
  abandonUpdate();
}

void BridgeDelegate::assertMainThread() const {
  assert(platform_.mainQueue.isCurrent());
}

bool BridgeDelegate::defaultsFlag(const char* key) const {
  const auto value = platform_.defaults.object(key);
  return value && countsAsTrue(*value);
}

}  // namespace torvane
