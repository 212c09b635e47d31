#include "platform/linux/folder_bundle.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace torvane {
namespace {

JsonObject readInfo(const std::string& path) {
  std::ifstream file(path);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  return parseJsonObject(text).value_or(JsonObject{});
}

}  // namespace

FolderBundle::FolderBundle(std::string path)
    : path_(std::move(path)), info_(readInfo(path_ + "/Info.json")) {}

std::optional<std::string> FolderBundle::pathForResource(const std::string& name,
                                                         const std::string& type) const {
  std::string resource = path_ + "/Resources/" + name + "." + type;
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(resource, ignored)) return std::nullopt;
  return resource;
}

std::optional<JsonValue> FolderBundle::infoValue(const std::string& key) const {
  const JsonValue* value = info_.if_contains(key);
  if (value == nullptr) return std::nullopt;
  return *value;
}

std::string mainBundlePath() {
  std::error_code ignored;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return program.parent_path().parent_path().string();
}

}  // namespace torvane
