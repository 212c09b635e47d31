#include "peer/registered_keys.h"

#include "protocol/base64.h"

namespace torvane {

void RegisteredKeys::insert(const std::string& deviceKey) {
  const std::lock_guard lock(mutex_);
  deviceKeys_.insert(deviceKey);
}

void RegisteredKeys::clear() {
  const std::lock_guard lock(mutex_);
  deviceKeys_.clear();
}

bool RegisteredKeys::contains(ByteView rawKey) const {
  const std::string deviceKey = base64Encode(rawKey);
  const std::lock_guard lock(mutex_);
  return deviceKeys_.contains(deviceKey);
}

}  // namespace torvane
