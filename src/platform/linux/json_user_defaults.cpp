#include "platform/linux/json_user_defaults.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/linux/private_file.h"

namespace torvane {

JsonUserDefaults::JsonUserDefaults(std::string path) : path_(std::move(path)) {
  const auto text = readSmallFile(path_, kMaxBytes);
  auto parsed = text ? parseJsonObject(*text) : std::nullopt;
  if (parsed) {
    values_ = std::move(*parsed);
  } else {
    std::rename(path_.c_str(), (path_ + ".broken").c_str());  // nothing where there is no file
  }
}

void JsonUserDefaults::save() const {
  const auto text = serializeJson(values_);
  if (!text || !makePrivateFolder(std::filesystem::path(path_).parent_path())) return;
  static_cast<void>(writePrivateFile(path_, *text));  // nobody to tell; values_ hold for this run
}

std::optional<JsonValue> JsonUserDefaults::object(const std::string& key) const {
  const JsonValue* value = values_.if_contains(key);
  if (value == nullptr) return std::nullopt;
  return *value;
}

void JsonUserDefaults::setObject(const std::string& key, JsonValue value) {
  values_[key] = std::move(value);
  save();
}

void JsonUserDefaults::removeObject(const std::string& key) {
  if (values_.erase(key) != 0) save();
}

std::string configFolder(const std::string& homeDirectory) {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  const bool isConfigured = configured != nullptr && configured[0] == '/';
  return isConfigured ? std::string(configured) : homeDirectory + "/.config";
}

std::string userDefaultsPath(const std::string& homeDirectory) {
  return configFolder(homeDirectory) + "/torvane/defaults.json";
}

}  // namespace torvane
