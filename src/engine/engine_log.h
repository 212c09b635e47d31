#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ports/file_system.h"

namespace torvane {

// The engine's output, kept in one file in the user's log folder and appended to from run to run.
class EngineLog {
 public:
  // `folder`: absolute path, without a trailing slash.
  EngineLog(FileSystem& files, std::string folder);

  // Absolute path of the file. Makes its folder when that is missing.
  [[nodiscard]] std::string path() const;

  // Open at its end for appending; a file of more than 2,000,000 bytes is deleted first.
  // Null when it cannot be opened.
  [[nodiscard]] std::unique_ptr<FileHandle> open() const;

  // The last six lines that are not blank, written at or after `offset`; empty when there are none
  // or they are not UTF-8. Reads little more than 64 KiB at most: of a longer line the end.
  [[nodiscard]] std::string tail(std::uint64_t offset) const;

 private:
  FileSystem& files_;
  std::string folder_;
};

// The last six lines of a text that are not blank, without spaces and tabs around them. Of a line
// that is too long for an alert the end, behind an ellipsis.
[[nodiscard]] std::string lastLines(std::string_view text);

// The line that begins each run: "\n===== engine start 2026-11-21 08:03:11 +0000 =====\n".
[[nodiscard]] std::string engineStartBanner(double unixTime);

}  // namespace torvane
