#include "platform/linux/xdg_login_item.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/linux/autostart_entry.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/linux/private_file.h"

namespace torvane {
namespace {

constexpr std::size_t kMostBytes = 64 << 10;

std::string failure(const std::string& path) {
  return path + ": " + std::generic_category().message(errno);
}

}  // namespace

XdgLoginItem::XdgLoginItem(const std::string& autostartFolder, std::string program)
    : path_(autostartFolder + "/torvane-p2p-helper.desktop"), program_(std::move(program)) {}

LoginItemStatus XdgLoginItem::status() const {
  const auto text = readSmallFile(path_, kMostBytes);
  if (!text) return LoginItemStatus::notRegistered;
  const AutostartEntry entry = parseAutostartEntry(*text);
  if (entry.isSwitchedOff) return LoginItemStatus::requiresApproval;
  const bool isThisProgram =
      std::find(entry.command.begin(), entry.command.end(), program_) != entry.command.end();
  return isThisProgram ? LoginItemStatus::enabled : LoginItemStatus::notFound;
}

std::optional<std::string> XdgLoginItem::registerItem() {
  errno = 0;
  if (makePrivateFolder(std::filesystem::path(path_).parent_path()) &&
      writePrivateFile(path_, autostartEntry(program_))) {
    return std::nullopt;
  }
  return failure(path_);
}

std::optional<std::string> XdgLoginItem::unregisterItem() {
  if (::unlink(path_.c_str()) == 0 || errno == ENOENT) return std::nullopt;
  return failure(path_);
}

std::string autostartFolder(const std::string& homeDirectory) {
  return configFolder(homeDirectory) + "/autostart";
}

}  // namespace torvane
