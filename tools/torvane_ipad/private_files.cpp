#include "torvane_ipad/private_files.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux/private_file.h"

namespace torvane::ipad {
namespace fs = std::filesystem;
namespace {

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

std::optional<std::string> readFile(const fs::path& file, std::size_t most) {
  return readSmallFile(file, most);
}

std::optional<std::string> readStandardInput(std::size_t most) {
  return readToEnd(STDIN_FILENO, most);
}

bool replacePrivateFile(const fs::path& file, std::string_view text) {
  return makePrivateFolder(file.parent_path()) && writePrivateFile(file, text);
}

bool createPrivateFile(const fs::path& file, std::string_view text) {
  return makePrivateFolder(file.parent_path()) && torvane::createPrivateFile(file.string(), text);
}

bool isOpenToOthers(const fs::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

}  // namespace torvane::ipad
