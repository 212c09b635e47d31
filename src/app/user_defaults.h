#pragma once

#include <optional>
#include <string>

#include "protocol/json.h"

namespace torvane {

// Per-user settings that outlive the process: property-list values under text keys.
// Main thread only. A store that cannot be read is empty; a failed write is not reported.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  [[nodiscard]] virtual std::optional<JsonValue> object(const std::string& key) const = 0;
  virtual void setObject(const std::string& key, JsonValue value) = 0;
  virtual void removeObject(const std::string& key) = 0;
};

}  // namespace torvane
