#include "platform/posix/posix_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>

#include "platform/posix/unique_fd.h"
#include "platform/posix/write_all.h"

namespace torvane {
namespace {

constexpr std::size_t kChunk = std::size_t{64} * 1024;
constexpr mode_t kFileMode = 0666;  // less the user's mask

// A zero byte would silently name another file.
bool isUsable(const std::string& path) {
  return path.find('\0') == std::string::npos;
}

std::optional<struct stat> status(const std::string& path) {
  struct stat found {};
  if (!isUsable(path) || ::stat(path.c_str(), &found) != 0) return std::nullopt;
  return found;
}

// O_NONBLOCK keeps open() from waiting for the other end of a FIFO; it means nothing for a file.
UniqueFd openRegular(const std::string& path, int flags) {
  if (!isUsable(path)) return {};
  UniqueFd file(::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, kFileMode));
  struct stat found {};
  if (!file || ::fstat(file.get(), &found) != 0 || !S_ISREG(found.st_mode)) return {};
  ::fcntl(file.get(), F_SETFL, flags & O_APPEND);
  return file;
}

class PosixFileHandle final : public FileHandle {
 public:
  explicit PosixFileHandle(UniqueFd file) : file_(std::move(file)) {}

  [[nodiscard]] std::uint64_t offset() const override {
    const off_t position = ::lseek(file_.get(), 0, SEEK_CUR);
    return position < 0 ? 0 : static_cast<std::uint64_t>(position);
  }

  bool seek(std::uint64_t offset) override {
    if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return false;
    return ::lseek(file_.get(), static_cast<off_t>(offset), SEEK_SET) >= 0;
  }

  bool seekToEnd() override { return ::lseek(file_.get(), 0, SEEK_END) >= 0; }

  bool write(std::string_view bytes) override { return writeAll(file_.get(), bytes); }

  [[nodiscard]] Bytes read(std::size_t most) override {
    Bytes bytes;
    while (bytes.size() < most) {
      const std::size_t had = bytes.size();
      bytes.resize(had + std::min(kChunk, most - had));
      const ssize_t count = ::read(file_.get(), bytes.data() + had, bytes.size() - had);
      bytes.resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return {};
      if (count == 0) break;
    }
    return bytes;
  }

  [[nodiscard]] int descriptor() const override { return file_.get(); }

 private:
  UniqueFd file_;
};

std::unique_ptr<FileHandle> handleFor(UniqueFd file) {
  return file ? std::make_unique<PosixFileHandle>(std::move(file)) : nullptr;
}

}  // namespace

bool PosixFileSystem::exists(const std::string& path) const {
  return status(path).has_value();
}

std::optional<std::uint64_t> PosixFileSystem::fileSize(const std::string& path) const {
  const auto found = status(path);
  if (!found || !S_ISREG(found->st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(found->st_size);
}

bool PosixFileSystem::createDirectories(const std::string& path) {
  if (!isUsable(path)) return false;
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return std::filesystem::is_directory(path, error);
}

bool PosixFileSystem::createFile(const std::string& path) {
  return static_cast<bool>(openRegular(path, O_WRONLY | O_CREAT | O_TRUNC));
}

bool PosixFileSystem::remove(const std::string& path) {
  return isUsable(path) && ::unlink(path.c_str()) == 0;
}

std::unique_ptr<FileHandle> PosixFileSystem::openForWriting(const std::string& path) {
  return handleFor(openRegular(path, O_WRONLY | O_APPEND));
}

std::unique_ptr<FileHandle> PosixFileSystem::openForReading(const std::string& path) {
  return handleFor(openRegular(path, O_RDONLY));
}

}  // namespace torvane
