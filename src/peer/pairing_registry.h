#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "peer/registered_keys.h"
#include "ports/main_hop.h"
#include "ports/user_defaults.h"

namespace torvane {

// Which iPads the user has paired, kept in the user defaults. Main thread only.
class PairingRegistry {
 public:
  static constexpr const char* pairedKey = "pairedDeviceKeys";  // of the user defaults

  PairingRegistry(UserDefaults& defaults, const MainHop& main);

  [[nodiscard]] bool isPaired(const std::string& deviceKey) const;
  [[nodiscard]] std::vector<std::string> names() const;  // of all devices, in any order

  // False: it holds, but could not be saved. It is tried again until there is room.
  bool pair(const std::string& deviceKey, const std::string& name);
  bool forgetAll();
  void saveAgain();

  // The keys of the paired devices, always current, for threads that may not look in here.
  [[nodiscard]] const std::shared_ptr<RegisteredKeys>& registeredKeys() const { return keys_; }

 private:
  bool retryUnless(bool saved);  // gives back what it is given

  UserDefaults& defaults_;
  const MainHop main_;
  std::map<std::string, std::string> pairedDevices;  // device key → device name
  const std::shared_ptr<RegisteredKeys> keys_ = std::make_shared<RegisteredKeys>();
  bool savesAgain = false;  // a change is not on disk yet
};

}  // namespace torvane
