#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace torvane {

// Writes all of it, in as many pieces as the system takes; false, with `errno` set, when not all
// of it was written.
[[nodiscard]] inline bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace torvane
