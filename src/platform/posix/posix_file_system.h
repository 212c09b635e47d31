#pragma once

#include "ports/file_system.h"

namespace torvane {

// Only regular files are opened: a FIFO or a device in a file's place is refused, never waited
// for. What is written goes to the end of the file, so that our writes and a child's do not
// overwrite each other.
class PosixFileSystem final : public FileSystem {
 public:
  [[nodiscard]] bool exists(const std::string& path) const override;
  [[nodiscard]] std::optional<std::uint64_t> fileSize(const std::string& path) const override;
  bool createDirectories(const std::string& path) override;
  bool createFile(const std::string& path) override;
  bool remove(const std::string& path) override;

  [[nodiscard]] std::unique_ptr<FileHandle> openForWriting(const std::string& path) override;
  [[nodiscard]] std::unique_ptr<FileHandle> openForReading(const std::string& path) override;

  // In posix_private_folder.cpp and posix_move.cpp.
  [[nodiscard]] bool createPrivateFolder(const std::string& path, const std::string& home) override;
  [[nodiscard]] std::optional<std::string> move(const std::string& from, const std::string& to,
                                                const DiskCrossing& crossing) override;

  // In posix_folders.cpp.
  [[nodiscard]] bool isFolder(const std::string& path) const override;
  bool removeAll(const std::string& path) override;
  [[nodiscard]] std::vector<std::string> names(const std::string& folder) const override;
  [[nodiscard]] std::optional<std::vector<SymbolicLink>> symbolicLinks(
      const std::string& folder) const override;
};

}  // namespace torvane
