#pragma once

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "platform/posix/unique_fd.h"
#include "protocol/bytes.h"

namespace torvane {

// The file that a response's body goes to; removed again unless it is kept.
class BodyFile {
 public:
  // Makes a new file, for the user alone; null when it cannot be made or is there already.
  [[nodiscard]] static std::unique_ptr<BodyFile> create(const std::string& path);
  ~BodyFile();
  BodyFile(const BodyFile&) = delete;
  BodyFile& operator=(const BodyFile&) = delete;

  // These, and create(), leave the reason of a failure in errno.
  [[nodiscard]] bool write(ByteView bytes);  // false: not all written
  [[nodiscard]] bool keep();                 // closes it; false: not all of it reached the disk

 private:
  BodyFile(std::string path, UniqueFd file) : path_(std::move(path)), file_(std::move(file)) {}

  std::string path_;  // empty once the file is kept
  UniqueFd file_;
};

// Whether there was no room for it, or no more for this user.
[[nodiscard]] inline bool isDiskFull(int error) {
  return error == ENOSPC || error == EDQUOT;
}

}  // namespace torvane
