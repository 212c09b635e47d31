#include "torvane_ipad/private_files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace torvane::ipad {
namespace fs = std::filesystem;
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ > STDERR_FILENO) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

std::optional<std::string> readAll(int descriptor, std::size_t most) {
  std::string text;
  std::array<char, 65536> buffer{};
  while (true) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
    if (text.size() > most) return std::nullopt;
  }
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// A complete new file beside `file`, under a name of its own.
std::optional<std::string> writeAside(const fs::path& file, std::string_view text) {
  if (!makePrivateFolder(file.parent_path())) return std::nullopt;
  std::string aside = file.string() + ".XXXXXX";
  const Descriptor descriptor(::mkostemp(aside.data(), O_CLOEXEC));  // mode 0600
  if (descriptor.number() < 0) return std::nullopt;
  if (writeAll(descriptor.number(), text) && ::fsync(descriptor.number()) == 0) return aside;
  ::unlink(aside.c_str());
  return std::nullopt;
}

fs::path homeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  const passwd* user = ::getpwuid(::getuid());
  return user != nullptr ? user->pw_dir : "/";
}

}  // namespace

fs::path dataFolder() {
  // The base directory specification wants relative values ignored.
  const char* set = std::getenv("XDG_DATA_HOME");
  const bool isSet = set != nullptr && *set == '/';
  return (isSet ? fs::path(set) : homeFolder() / ".local/share") / "torvane-ipad";
}

bool makePrivateFolder(const fs::path& folder) {
  if (folder.empty()) return true;
  std::error_code error;
  if (fs::is_directory(folder, error)) return true;
  fs::create_directories(folder.parent_path(), error);
  return ::mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

std::optional<std::string> readFile(const fs::path& file, std::size_t most) {
  const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (descriptor.number() < 0 || ::fstat(descriptor.number(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return readAll(descriptor.number(), most);
}

std::optional<std::string> readStandardInput(std::size_t most) {
  return readAll(STDIN_FILENO, most);
}

bool replacePrivateFile(const fs::path& file, std::string_view text) {
  const auto aside = writeAside(file, text);
  if (!aside) return false;
  if (::rename(aside->c_str(), file.c_str()) == 0) return true;
  ::unlink(aside->c_str());
  return false;
}

bool createPrivateFile(const fs::path& file, std::string_view text) {
  const auto aside = writeAside(file, text);
  if (!aside) return false;
  const bool isNew = ::link(aside->c_str(), file.c_str()) == 0;
  ::unlink(aside->c_str());
  return isNew;
}

bool isOpenToOthers(const fs::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

}  // namespace torvane::ipad
