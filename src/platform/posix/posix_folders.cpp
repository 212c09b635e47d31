// Folders with all that they hold.

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "platform/posix/folder_entry.h"
#include "platform/posix/posix_file_system.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

// A folder that its owner may not change keeps what it holds from being removed.
void openFolders(const fs::path& path) {
  const auto status = entryStatus(path);
  if (!status || !S_ISDIR(status->st_mode) || status->st_uid != ::geteuid()) return;
  ::chmod(path.c_str(), kPrivateMode);
  std::error_code error;
  fs::directory_iterator entry(path, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    openFolders(entry->path());
  }
}

}  // namespace

bool PosixFileSystem::isFolder(const std::string& path) const {
  const auto status = isUsable(path) ? entryStatus(path) : std::nullopt;
  return status && S_ISDIR(status->st_mode);
}

bool PosixFileSystem::removeAll(const std::string& path) {
  if (!isUsable(path)) return false;
  std::error_code ignored;
  fs::remove_all(path, ignored);
  if (!entryStatus(path)) return true;
  openFolders(path);
  fs::remove_all(path, ignored);
  return !entryStatus(path);
}

std::vector<std::string> PosixFileSystem::names(const std::string& folder) const {
  std::vector<std::string> found;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    found.push_back(entry->path().filename());
  }
  return found;
}

std::optional<std::vector<SymbolicLink>> PosixFileSystem::symbolicLinks(
    const std::string& folder) const {
  if (!isFolder(folder)) return std::nullopt;
  std::vector<SymbolicLink> links;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (!entry->is_symlink(error)) continue;
    const fs::path target = fs::read_symlink(entry->path(), error);
    links.push_back({entry->path().lexically_relative(folder), target});
  }
  if (error) return std::nullopt;
  return links;
}

}  // namespace torvane
