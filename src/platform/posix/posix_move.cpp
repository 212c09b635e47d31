// Moving a file or a folder, to another disk too.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "platform/posix/folder_entry.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/write_all.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 07777;

std::string describe(const std::error_code& error) {
  return error.message() + ".";
}

std::error_code lastError() {
  return {errno, std::generic_category()};
}

// Copies with the permissions. The standard library's own copy says "input/output error" for a full
// disk.
class Copy {
 public:
  explicit Copy(const std::function<bool()>& isWanted) : isWanted_(isWanted) {}

  [[nodiscard]] std::error_code entry(const fs::path& from, const fs::path& to) const {
    const auto status = entryStatus(from);
    if (!status) return lastError();
    const mode_t mode = status->st_mode & kPermissions;
    std::error_code error = std::make_error_code(std::errc::not_supported);
    if (S_ISDIR(status->st_mode)) return folder(from, to, mode);
    if (S_ISREG(status->st_mode)) return file(from, to, mode);
    if (S_ISLNK(status->st_mode)) fs::copy_symlink(from, to, error);
    return error;
  }

 private:
  [[nodiscard]] std::error_code folder(const fs::path& from, const fs::path& to,
                                       mode_t mode) const {
    if (::mkdir(to.c_str(), kPrivateMode) != 0) return lastError();
    std::error_code error;
    fs::directory_iterator each(from, error);
    for (; !error && each != fs::directory_iterator(); each.increment(error)) {
      if (const auto failed = entry(each->path(), to / each->path().filename())) return failed;
    }
    if (error) return error;
    return ::chmod(to.c_str(), mode) == 0 ? std::error_code() : lastError();
  }

  [[nodiscard]] std::error_code file(const fs::path& from, const fs::path& to, mode_t mode) const {
    const UniqueFd in(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!in) return lastError();
    const UniqueFd out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateMode));
    if (!out) return lastError();
    if (const auto error = bytes(in.get(), out.get())) return error;
    return ::fchmod(out.get(), mode) == 0 ? std::error_code() : lastError();
  }

  [[nodiscard]] std::error_code bytes(int from, int to) const {
    std::array<char, 65536> buffer;
    while (!isWanted_ || isWanted_()) {
      const ssize_t got = ::read(from, buffer.data(), buffer.size());
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return got < 0 ? lastError() : std::error_code();
      if (!writeAll(to, {buffer.data(), static_cast<std::size_t>(got)})) return lastError();
    }
    return std::make_error_code(std::errc::operation_canceled);
  }

  const std::function<bool()>& isWanted_;
};

std::error_code copyTree(const fs::path& from, const fs::path& to,
                         const std::function<bool()>& isWanted) {
  if (entryStatus(to)) return std::make_error_code(std::errc::file_exists);
  const std::error_code error = Copy(isWanted).entry(from, to);
  std::error_code ignored;
  if (error) fs::remove_all(to, ignored);
  return error;
}

// The original is renamed before it is removed, so that it is gone at once or not at all: removing
// may fail half-way.
std::error_code moveAcross(const fs::path& from, const fs::path& to, const DiskCrossing& crossing) {
  std::error_code error = copyTree(from, to, crossing.isWanted);
  if (error) return error;
  std::error_code ignored;
  fs::path aside = from;
  aside += ".moved-" + std::to_string(::getpid());
  fs::rename(from, crossing.original.value_or(aside), error);
  if (error) fs::remove_all(to, ignored);
  if (!crossing.original) fs::remove_all(aside, ignored);
  return error;
}

}  // namespace

std::optional<std::string> PosixFileSystem::move(const std::string& from, const std::string& to,
                                                 const DiskCrossing& crossing) {
  std::error_code error = std::make_error_code(std::errc::invalid_argument);
  if (!isUsable(from) || !isUsable(to) || !isUsable(crossing.original.value_or(to))) {
    return describe(error);
  }
  fs::rename(from, to, error);
  if (error == std::errc::cross_device_link) error = moveAcross(from, to, crossing);
  if (error) return describe(error);
  return std::nullopt;
}

}  // namespace torvane
