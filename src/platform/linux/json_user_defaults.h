#pragma once

#include <optional>
#include <string>

#include "ports/user_defaults.h"

namespace torvane {

// One JSON object in one file, read on construction and written whole at each change: aside,
// synced, renamed, readable by its user alone; where that fails the file stays as it was. A file
// that is not such an object, or is larger than kMaxBytes, counts as empty and is kept beside it
// with ".broken" behind its name; none that large is written.
class JsonUserDefaults final : public UserDefaults {
 public:
  static constexpr std::size_t kMaxBytes = 1 << 20;

  explicit JsonUserDefaults(std::string path);

  [[nodiscard]] std::optional<JsonValue> object(const std::string& key) const override;
  bool setObject(const std::string& key, JsonValue value) override;
  bool removeObject(const std::string& key) override;
  [[nodiscard]] bool save() override;

 private:
  [[nodiscard]] bool write() const;

  std::string path_;
  JsonObject values_;
  bool isSaved_ = true;  // the file holds these values
};

// The user's folder for settings.
[[nodiscard]] std::string configFolder(const std::string& homeDirectory);

// torvane/defaults.json in the user's folder for settings.
[[nodiscard]] std::string userDefaultsPath(const std::string& homeDirectory);

}  // namespace torvane
