#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>

namespace torvane {

inline constexpr mode_t kPrivateMode = 0700;

// A zero byte would silently name another file.
[[nodiscard]] inline bool isUsable(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

// Of the entry itself, not of what a link leads to; none where there is none.
[[nodiscard]] inline std::optional<struct stat> entryStatus(const std::filesystem::path& path) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0) return std::nullopt;
  return found;
}

}  // namespace torvane
