#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace torvane {

// Owns one reference to an object of the C frameworks.
template <typename Ref>
class CFOwned {
 public:
  CFOwned() = default;
  explicit CFOwned(Ref owned) : ref_(owned) {}
  CFOwned(CFOwned&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
  CFOwned& operator=(CFOwned&& other) noexcept {
    std::swap(ref_, other.ref_);
    return *this;
  }
  CFOwned(const CFOwned&) = delete;
  CFOwned& operator=(const CFOwned&) = delete;
  ~CFOwned() {
    if (ref_ != nullptr) CFRelease(ref_);
  }

  [[nodiscard]] Ref get() const { return ref_; }
  explicit operator bool() const { return ref_ != nullptr; }

 private:
  Ref ref_ = nullptr;
};

}  // namespace torvane
