#include "peer/pairing_registry.h"

namespace torvane {
namespace {

constexpr double kSaveInterval = 5.0;  // until there is room

std::map<std::string, std::string> loadPairedDevices(const UserDefaults& defaults) {
  const auto stored = defaults.object(PairingRegistry::pairedKey);
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

PairingRegistry::PairingRegistry(UserDefaults& defaults, const MainHop& main)
    : defaults_(defaults), main_(main), pairedDevices(loadPairedDevices(defaults)) {
  for (const auto& [deviceKey, name] : pairedDevices) keys_->insert(deviceKey);
}

bool PairingRegistry::isPaired(const std::string& deviceKey) const {
  return pairedDevices.count(deviceKey) != 0;
}

std::vector<std::string> PairingRegistry::names() const {
  std::vector<std::string> names;
  for (const auto& [deviceKey, name] : pairedDevices) names.push_back(name);
  return names;
}

bool PairingRegistry::pair(const std::string& deviceKey, const std::string& name) {
  pairedDevices[deviceKey] = name;
  keys_->insert(deviceKey);
  JsonObject stored;
  for (const auto& [key, deviceName] : pairedDevices) stored[key] = deviceName;
  return retryUnless(defaults_.setObject(pairedKey, std::move(stored)));
}

bool PairingRegistry::forgetAll() {
  pairedDevices.clear();
  keys_->clear();
  return retryUnless(defaults_.removeObject(pairedKey));
}

bool PairingRegistry::retryUnless(bool saved) {
  if (!saved && !savesAgain) {
    savesAgain = true;
    main_.after(kSaveInterval, [this] { saveAgain(); });
  }
  return saved;
}

void PairingRegistry::saveAgain() {
  if (!savesAgain) return;
  savesAgain = false;
  retryUnless(defaults_.save());
}

}  // namespace torvane
