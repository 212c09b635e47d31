#include "torvane_ipad/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/private_file.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/write_all.h"

namespace torvane::ipad {
namespace fs = std::filesystem;
namespace {

constexpr mode_t kEverybody = 0666;
constexpr mode_t kPermissions = 07777;

bool isStandardOutput(const std::string& file) {
  return file == "-";
}

// Of a new file. Nothing else in this program makes files meanwhile.
mode_t usualMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return kEverybody & ~mask;
}

// Where links lead, so that they stay links; the name itself where there is nothing yet.
fs::path target(const std::string& file) {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(file, error);
  return error ? fs::path(file) : path;
}

bool writeInto(const fs::path& file, std::string_view content) {
  const UniqueFd opened(::open(file.c_str(), O_WRONLY | O_CLOEXEC));
  return opened && writeAll(opened.get(), content);
}

}  // namespace

std::string outputProblem(const std::string& file) {
  if (isStandardOutput(file)) {
    return ::isatty(STDOUT_FILENO) != 0 ? "This is no text for a terminal. Give a file instead of "
                                          "\"-\", or redirect the output."
                                        : "";
  }
  std::error_code error;
  const fs::path path = target(file);
  if (fs::is_directory(path, error)) return file + " is a folder. Give the name of a file in it.";
  const fs::path folder = path.has_parent_path() ? path.parent_path() : ".";
  if (!fs::is_directory(folder, error)) return "There is no folder " + folder.string() + ".";
  const bool isPlain = !fs::exists(path, error) || fs::is_regular_file(path, error);
  return ::access((isPlain ? folder : path).c_str(), W_OK) == 0 ? "" : cannotWrite(file);
}

bool writeOutput(const std::string& file, std::string_view content) {
  if (isStandardOutput(file)) return writeAll(STDOUT_FILENO, content);
  const fs::path path = target(file);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return replaceFile(path, content, usualMode());
  if (!S_ISREG(status.st_mode)) return writeInto(path, content);
  return replaceFile(path, content, status.st_mode & kPermissions);
}

std::string cannotWrite(const std::string& file) {
  return file + " cannot be written: is there room, and may you write there?";
}

}  // namespace torvane::ipad
