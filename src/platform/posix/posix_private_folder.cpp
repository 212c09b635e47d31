// A folder that nobody but its user can change, or put another in the place of.

#include <unistd.h>

#include <filesystem>

#include "platform/posix/folder_entry.h"
#include "platform/posix/posix_file_system.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 0777;  // without set-group-ID, which a folder has from its parent
constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;
constexpr int kMostLinks = 40;

void makeFolders(const fs::path& path) {
  if (entryStatus(path) || path == path.root_path()) return;
  makeFolders(path.parent_path());
  ::mkdir(path.c_str(), kPrivateMode);
}

bool isOwn(const struct stat& entry) {
  return entry.st_uid == ::geteuid();
}

bool isTrusted(const struct stat& entry) {
  return isOwn(entry) || entry.st_uid == 0;
}

// In a sticky folder nobody else may rename or remove what is ours.
bool keepsOthersOut(const struct stat& folder) {
  return (folder.st_mode & kWritableByOthers) == 0 || (folder.st_mode & S_ISVTX) != 0;
}

bool isAbove(const fs::path& folder, const fs::path& home) {
  const fs::path relative = home.lexically_relative(folder);
  return !relative.empty() && relative != "." && *relative.begin() != "..";
}

// Walks down a path as the system would, and looks at each folder and link on the way.
class Way {
 public:
  explicit Way(const std::string& home) {
    std::error_code none;
    home_ = fs::canonical(home, none);
  }

  [[nodiscard]] bool isSafe(const fs::path& path) {
    if (path.is_absolute()) at_ = "/";
    for (const fs::path& part : path.relative_path()) {
      if (part == "..") at_ = at_.parent_path();
      const bool isName = !part.empty() && part != "." && part != "..";
      if (isName && !enter(part)) return false;
    }
    return true;
  }

 private:
  bool enter(const fs::path& name) {
    const fs::path next = at_ / name;
    const auto entry = entryStatus(next);
    if (!entry) return false;
    if (S_ISLNK(entry->st_mode)) return isTrusted(*entry) && follow(next);
    at_ = next;
    if (!S_ISDIR(entry->st_mode)) return false;
    return isAbove(at_, home_) || (isTrusted(*entry) && keepsOthersOut(*entry));
  }

  bool follow(const fs::path& link) {
    std::error_code error;
    const fs::path target = fs::read_symlink(link, error);
    return !error && --linksLeft_ >= 0 && isSafe(target);
  }

  fs::path home_;
  fs::path at_ = "/";  // a folder, without links on the way
  int linksLeft_ = kMostLinks;
};

}  // namespace

bool PosixFileSystem::createPrivateFolder(const std::string& path, const std::string& home) {
  if (!isUsable(path)) return false;
  makeFolders(path);
  const auto folder = entryStatus(path);
  return folder && S_ISDIR(folder->st_mode) && isOwn(*folder) &&
         (folder->st_mode & kPermissions) == kPrivateMode && Way(home).isSafe(path);
}

}  // namespace torvane
