#include "platform/linux/private_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/posix/unique_fd.h"
#include "platform/posix/write_all.h"

namespace torvane {
namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;
constexpr std::size_t kPiece = 16 << 10;  // bytes that are read at once

// A complete new file beside `path`, under a name of its own; empty when it cannot be written.
std::string writeAside(const std::string& path, std::string_view content, mode_t mode) {
  std::string aside = path + ".XXXXXX";
  const UniqueFd file(::mkostemp(aside.data(), O_CLOEXEC));  // makes it with mode 0600
  if (!file) return {};
  const bool isWhole = writeAll(file.get(), content) && ::fchmod(file.get(), mode) == 0;
  if (isWhole && ::fsync(file.get()) == 0) return aside;
  ::unlink(aside.c_str());
  return {};
}

}  // namespace

bool makePrivateFolder(const std::string& path) {
  std::error_code error;
  if (path.empty() || std::filesystem::is_directory(path, error)) return true;
  const std::string parent = std::filesystem::path(path).parent_path();
  if (parent != path && !makePrivateFolder(parent)) return false;
  return ::mkdir(path.c_str(), kPrivateFolder) == 0 || errno == EEXIST;
}

bool writePrivateFile(const std::string& path, std::string_view content) {
  return replaceFile(path, content, kPrivateFile);
}

bool replaceFile(const std::string& path, std::string_view content, mode_t mode) {
  const std::string aside = writeAside(path, content, mode);
  if (aside.empty()) return false;
  if (std::rename(aside.c_str(), path.c_str()) == 0) return true;
  ::unlink(aside.c_str());
  return false;
}

bool createPrivateFile(const std::string& path, std::string_view content) {
  const std::string aside = writeAside(path, content, kPrivateFile);
  if (aside.empty()) return false;
  const bool isNew = ::link(aside.c_str(), path.c_str()) == 0;
  ::unlink(aside.c_str());
  return isNew;
}

std::optional<std::string> readSmallFile(const std::string& path, std::size_t most) {
  const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return readToEnd(file.get(), most);
}

std::optional<std::string> readToEnd(int descriptor, std::size_t most) {
  std::string content;
  std::array<char, kPiece> piece;
  while (content.size() <= most) {
    const ssize_t got = ::read(descriptor, piece.data(), piece.size());
    if (got == 0) return content;
    if (got < 0 && errno != EINTR) return std::nullopt;
    if (got > 0) content.append(piece.data(), static_cast<std::size_t>(got));
  }
  return std::nullopt;
}

FileLock::FileLock(const std::string& path)
    : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivateFile)) {
  while (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace torvane
