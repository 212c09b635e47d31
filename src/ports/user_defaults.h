#pragma once

#include <optional>
#include <string>

#include "protocol/json.h"

namespace torvane {

// Per-user settings that outlive the process: property-list values under text keys.
// Main thread only. A store that cannot be read is empty. A change that cannot be written, as on a
// full disk, says false and holds for this run; the next one that can be takes it along.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  [[nodiscard]] virtual std::optional<JsonValue> object(const std::string& key) const = 0;
  virtual bool setObject(const std::string& key, JsonValue value) = 0;
  virtual bool removeObject(const std::string& key) = 0;

  // Writes what could not be written before. True when nothing is left to write.
  [[nodiscard]] virtual bool save() = 0;
};

// What a stored value counts as where a flag is wanted. Users and their administrators write flags
// by hand, and with the Mac's own rules: a number counts unless it is 0, and a text as NSString's
// boolValue, which looks at its beginning alone ("YES", "true", "1").
[[nodiscard]] bool countsAsTrue(const JsonValue& value);

}  // namespace torvane
