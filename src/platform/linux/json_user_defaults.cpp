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

bool JsonUserDefaults::save() {
  isSaved_ = isSaved_ || write();
  return isSaved_;
}

bool JsonUserDefaults::write() const {
  const auto text = serializeJson(values_);
  return text && text->size() <= kMaxBytes &&
         makePrivateFolder(std::filesystem::path(path_).parent_path()) &&
         writePrivateFile(path_, *text);
}

std::optional<JsonValue> JsonUserDefaults::object(const std::string& key) const {
  const JsonValue* value = values_.if_contains(key);
  if (value == nullptr) return std::nullopt;
  return *value;
}

bool JsonUserDefaults::setObject(const std::string& key, JsonValue value) {
  values_[key] = std::move(value);
  isSaved_ = false;
  return save();
}

bool JsonUserDefaults::removeObject(const std::string& key) {
  if (values_.erase(key) != 0) isSaved_ = false;
  return save();
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
