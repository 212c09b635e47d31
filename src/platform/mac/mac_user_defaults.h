#pragma once

#include "app/user_defaults.h"

namespace torvane {

// The program's domain of the standard user defaults.
class MacUserDefaults final : public UserDefaults {
 public:
  [[nodiscard]] std::optional<JsonValue> object(const std::string& key) const override;
  void setObject(const std::string& key, JsonValue value) override;
  void removeObject(const std::string& key) override;
};

}  // namespace torvane
