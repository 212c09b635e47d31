#include "platform/linux/former_log.h"

#include <filesystem>
#include <system_error>

namespace torvane {
namespace {

namespace fs = std::filesystem;

// To another disk, too. Whether it is there now.
bool move(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::create_directories(to.parent_path(), error);
  fs::rename(from, to, error);
  if (!error) return true;
  if (!fs::copy_file(from, to, error)) return false;
  return fs::remove(from, error);
}

}  // namespace

void moveFormerLog(const std::string& homeDirectory, const std::string& logDirectory) {
  fs::path folder = fs::path(homeDirectory) / "Library/Logs/Torvane P2P Helper";
  const fs::path former = folder / "engine.log";
  const fs::path log = fs::path(logDirectory) / "engine.log";
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(former, error)) || fs::exists(log, error)) return;
  if (!move(former, log)) return;
  // Only what is empty goes: others may have put something there.
  for (; folder != homeDirectory && fs::remove(folder, error); folder = folder.parent_path()) {
  }
}

}  // namespace torvane
