#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace torvane {

// An open file; closed when destroyed. Not shared between threads.
class FileHandle {
 public:
  virtual ~FileHandle() = default;

  [[nodiscard]] virtual std::uint64_t offset() const = 0;  // bytes from the start
  virtual bool seek(std::uint64_t offset) = 0;             // false: position unchanged
  virtual bool seekToEnd() = 0;                            // false: position unchanged
  virtual bool write(std::string_view bytes) = 0;          // false: not all written
  [[nodiscard]] virtual Bytes read(std::size_t most) = 0;  // empty at the end or on error
  [[nodiscard]] virtual int descriptor() const = 0;        // for a child's output
};

// Plain files by absolute path. Any thread.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  [[nodiscard]] virtual bool exists(const std::string& path) const = 0;
  [[nodiscard]] virtual std::optional<std::uint64_t> fileSize(const std::string& path) const = 0;
  virtual bool createDirectories(const std::string& path) = 0;
  virtual bool createFile(const std::string& path) = 0;  // empty
  virtual bool remove(const std::string& path) = 0;      // one file

  // Null when the file cannot be opened. Writing starts at offset 0 and keeps what is there;
  // where the platform can, every write goes to the end of the file.
  [[nodiscard]] virtual std::unique_ptr<FileHandle> openForWriting(const std::string& path) = 0;
  [[nodiscard]] virtual std::unique_ptr<FileHandle> openForReading(const std::string& path) = 0;
};

}  // namespace torvane
