// Folders with all that they hold.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "platform/posix/posix_file_system.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPrivateMode = 0700;
constexpr mode_t kPermissions = 07777;
constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;

// A zero byte would silently name another file.
bool isUsable(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

// Of the entry itself, not of what a link leads to.
std::optional<struct stat> entryStatus(const fs::path& path) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0) return std::nullopt;
  return found;
}

bool isOwnFolder(const std::optional<struct stat>& status) {
  return status && S_ISDIR(status->st_mode) && status->st_uid == ::geteuid();
}

void makeFolders(const fs::path& path) {
  if (entryStatus(path) || path == path.root_path()) return;
  makeFolders(path.parent_path());
  ::mkdir(path.c_str(), kPrivateMode);
}

std::string describe(const std::error_code& error) {
  return error.message() + ".";
}

void copyTree(const fs::path& from, const fs::path& to, std::error_code& error) {
  if (entryStatus(to)) {
    error = std::make_error_code(std::errc::file_exists);
    return;
  }
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
  std::error_code ignored;
  if (error) fs::remove_all(to, ignored);
}

// Across disks. The original is renamed before it is removed, so that it is gone at once or not at
// all: removing may fail half-way.
std::error_code moveAcross(const fs::path& from, const fs::path& to) {
  std::error_code error;
  std::error_code ignored;
  copyTree(from, to, error);
  if (error) return error;
  fs::path aside = from;
  aside += ".moved-" + std::to_string(::getpid());
  fs::rename(from, aside, error);
  fs::remove_all(error ? to : aside, ignored);
  return error;
}

}  // namespace

bool PosixFileSystem::isFolder(const std::string& path) const {
  const auto status = isUsable(path) ? entryStatus(path) : std::nullopt;
  return status && S_ISDIR(status->st_mode);
}

bool PosixFileSystem::createPrivateFolder(const std::string& path) {
  if (!isUsable(path)) return false;
  makeFolders(path);
  const auto above = entryStatus(fs::path(path).parent_path());
  const auto folder = entryStatus(path);
  return isOwnFolder(above) && (above->st_mode & kWritableByOthers) == 0 && isOwnFolder(folder) &&
         (folder->st_mode & kPermissions) == kPrivateMode;
}

bool PosixFileSystem::removeAll(const std::string& path) {
  if (!isUsable(path)) return false;
  std::error_code ignored;
  fs::remove_all(path, ignored);
  return !entryStatus(path);
}

std::optional<std::string> PosixFileSystem::move(const std::string& from, const std::string& to) {
  std::error_code error = std::make_error_code(std::errc::invalid_argument);
  if (!isUsable(from) || !isUsable(to)) return describe(error);
  fs::rename(from, to, error);
  if (error == std::errc::cross_device_link) error = moveAcross(from, to);
  if (error) return describe(error);
  return std::nullopt;
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
