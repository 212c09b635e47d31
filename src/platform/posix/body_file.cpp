#include "platform/posix/body_file.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/write_all.h"

namespace torvane {
namespace {

constexpr mode_t kPrivateFile = 0600;

}  // namespace

std::unique_ptr<BodyFile> BodyFile::create(const std::string& path) {
  if (path.find('\0') != std::string::npos) return nullptr;
  UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateFile));
  if (!file) return nullptr;
  return std::unique_ptr<BodyFile>(new BodyFile(path, std::move(file)));
}

BodyFile::~BodyFile() {
  if (!path_.empty()) ::unlink(path_.c_str());
}

bool BodyFile::write(ByteView bytes) {
  return writeAll(file_.get(), asText(bytes));
}

bool BodyFile::keep() {
  if (::fsync(file_.get()) != 0) return false;
  file_.reset();
  path_.clear();
  return true;
}

}  // namespace torvane
