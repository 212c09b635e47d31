#pragma once

#include <unistd.h>

#include <utility>

namespace torvane {

// Owns a file descriptor; closes it when destroyed.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int descriptor) : descriptor_(descriptor) {}
  UniqueFd(UniqueFd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    other.reset();
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  [[nodiscard]] int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

  void reset() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_ = -1;
};

}  // namespace torvane
