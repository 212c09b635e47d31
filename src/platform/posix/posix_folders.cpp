// Folders with all that they hold.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/write_all.h"

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

// A folder that its owner may not change keeps what it holds from being removed.
void openFolders(const fs::path& path) {
  if (!isOwnFolder(entryStatus(path))) return;
  ::chmod(path.c_str(), kPrivateMode);
  std::error_code error;
  fs::directory_iterator entry(path, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    openFolders(entry->path());
  }
}

std::string describe(const std::error_code& error) {
  return error.message() + ".";
}

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code copyBytes(int from, int to) {
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t got = ::read(from, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got < 0 ? lastError() : std::error_code();
    if (!writeAll(to, {buffer.data(), static_cast<std::size_t>(got)})) return lastError();
  }
}

// The standard library's own copy says "input/output error" for a full disk.
std::error_code copyFile(const fs::path& from, const fs::path& to, mode_t mode) {
  const UniqueFd in(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
  if (!in) return lastError();
  const UniqueFd out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateMode));
  if (!out) return lastError();
  if (const auto error = copyBytes(in.get(), out.get())) return error;
  return ::fchmod(out.get(), mode) == 0 ? std::error_code() : lastError();
}

std::error_code copyEntry(const fs::path& from, const fs::path& to);

std::error_code copyFolder(const fs::path& from, const fs::path& to, mode_t mode) {
  if (::mkdir(to.c_str(), kPrivateMode) != 0) return lastError();
  std::error_code error;
  fs::directory_iterator entry(from, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (const auto failed = copyEntry(entry->path(), to / entry->path().filename())) return failed;
  }
  if (error) return error;
  return ::chmod(to.c_str(), mode) == 0 ? std::error_code() : lastError();
}

std::error_code copyEntry(const fs::path& from, const fs::path& to) {
  const auto status = entryStatus(from);
  if (!status) return lastError();
  const mode_t mode = status->st_mode & kPermissions;
  std::error_code error = std::make_error_code(std::errc::not_supported);
  if (S_ISDIR(status->st_mode)) return copyFolder(from, to, mode);
  if (S_ISREG(status->st_mode)) return copyFile(from, to, mode);
  if (S_ISLNK(status->st_mode)) fs::copy_symlink(from, to, error);
  return error;
}

std::error_code copyTree(const fs::path& from, const fs::path& to) {
  if (entryStatus(to)) return std::make_error_code(std::errc::file_exists);
  const std::error_code error = copyEntry(from, to);
  std::error_code ignored;
  if (error) fs::remove_all(to, ignored);
  return error;
}

// Across disks. The original is renamed before it is removed, so that it is gone at once or not at
// all: removing may fail half-way.
std::error_code moveAcross(const fs::path& from, const fs::path& to,
                           const std::optional<std::string>& original) {
  std::error_code error = copyTree(from, to);
  if (error) return error;
  std::error_code ignored;
  fs::path aside = from;
  aside += ".moved-" + std::to_string(::getpid());
  fs::rename(from, original.value_or(aside), error);
  if (error) fs::remove_all(to, ignored);
  if (!original) fs::remove_all(aside, ignored);
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
  if (!entryStatus(path)) return true;
  openFolders(path);
  fs::remove_all(path, ignored);
  return !entryStatus(path);
}

std::optional<std::string> PosixFileSystem::move(const std::string& from, const std::string& to,
                                                 const std::optional<std::string>& original) {
  std::error_code error = std::make_error_code(std::errc::invalid_argument);
  if (!isUsable(from) || !isUsable(to) || !isUsable(original.value_or(to))) return describe(error);
  fs::rename(from, to, error);
  if (error == std::errc::cross_device_link) error = moveAcross(from, to, original);
  if (error) return describe(error);
  return std::nullopt;
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
