#pragma once

#include <mutex>
#include <set>
#include <string>

#include "protocol/bytes.h"

namespace torvane {

// The device keys of the pairing registry, for threads that may not look into it. The registry
// writes each change of its own here, so that both always hold the same keys. Any thread.
class RegisteredKeys {
 public:
  void insert(const std::string& deviceKey);
  void clear();

  // Whether the device with this raw public key is paired.
  [[nodiscard]] bool contains(ByteView rawKey) const;

 private:
  mutable std::mutex mutex_;
  std::set<std::string> deviceKeys_;
};

}  // namespace torvane
