#include "platform/linux/folder_bundle.h"

#include <filesystem>
#include <system_error>

#include "platform/linux/private_file.h"

namespace torvane {
namespace {

JsonObject readInfo(const std::string& path) {
  constexpr std::size_t kMostBytes = 1 << 20;
  return parseJsonObject(readSmallFile(path, kMostBytes).value_or("")).value_or(JsonObject{});
}

}  // namespace

FolderBundle::FolderBundle(std::string path)
    : path_(std::move(path)), info_(readInfo(path_ + "/Info.json")) {}

std::optional<std::string> FolderBundle::executablePath() const {
  const JsonValue* name = info_.if_contains("CFBundleExecutable");
  if (name == nullptr || !name->is_string()) return std::nullopt;
  return path_ + "/bin/" + std::string(name->get_string());
}

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

std::string bundlePathOfProgram(const std::string& program) {
  return std::filesystem::path(program).parent_path().parent_path();
}

std::string mainBundlePath() {
  std::error_code ignored;
  return bundlePathOfProgram(std::filesystem::read_symlink("/proc/self/exe", ignored));
}

}  // namespace torvane
