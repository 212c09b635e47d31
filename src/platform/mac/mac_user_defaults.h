#pragma once

#include "ports/user_defaults.h"

namespace torvane {

// The program's domain of the standard user defaults. Whether and when they are written is the
// system's: it tells of no failure.
class MacUserDefaults final : public UserDefaults {
 public:
  [[nodiscard]] std::optional<JsonValue> object(const std::string& key) const override;
  bool setObject(const std::string& key, JsonValue value) override;
  bool removeObject(const std::string& key) override;
  [[nodiscard]] bool save() override { return true; }
};

}  // namespace torvane
