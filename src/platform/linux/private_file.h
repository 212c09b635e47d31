#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace torvane {

// Files that only the user may read. All fail with false or none, never with an exception.

// Makes the folder with its parents, for the user alone; true when it is there already, and for
// the empty path, the current folder.
[[nodiscard]] bool makePrivateFolder(const std::string& path);

// Writes a file aside, with mode 0600, syncs it and moves it into its place.
[[nodiscard]] bool writePrivateFile(const std::string& path, std::string_view content);

// The same for a file that is not private, with this mode.
[[nodiscard]] bool replaceFile(const std::string& path, std::string_view content, mode_t mode);

// The same, but leaves a file that is there already alone, and says so with false.
[[nodiscard]] bool createPrivateFile(const std::string& path, std::string_view content);

// None when there is no such regular file or it is larger than `most` bytes.
[[nodiscard]] std::optional<std::string> readSmallFile(const std::string& path, std::size_t most);

// Reads up to the end; none when it cannot be read or is more than `most` bytes.
[[nodiscard]] std::optional<std::string> readToEnd(int descriptor, std::size_t most);

// Holds other users of the same lock file off, in this process and others, while it lives. Where
// the file cannot be made nobody is held off.
class FileLock {
 public:
  explicit FileLock(const std::string& path);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace torvane
