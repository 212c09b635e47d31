#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

struct SymbolicLink {
  std::string path;    // relative to the folder that was searched
  std::string target;  // as it is written in the link

  bool operator==(const SymbolicLink&) const = default;
};

// For a move to another disk, where everything is copied first.
struct DiskCrossing {
  // What was copied is left here, a path in the same folder, where one is given; the caller removes
  // it, or moves it back, for which its disk needs no room.
  std::optional<std::string> original;

  // Asked again and again, on the same thread: with the first no the move has failed. Empty: it is
  // not asked.
  std::function<bool()> isWanted;
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

  // Whether there is a folder at `path` itself; a link to one is none.
  [[nodiscard]] virtual bool isFolder(const std::string& path) const = 0;

  // Makes a folder, and those above it that are missing, for this user alone. True when `path` is
  // now a real folder of this user that nobody else may enter, and nobody else can put another in
  // its place; whoever made it. For that, every folder on the way to it belongs to this user or the
  // system, and nobody else may write to it unless its sticky bit keeps them from what is in it;
  // links on the way belong to this user or the system too. The folders above `home`, the user's
  // own, are taken as they are.
  [[nodiscard]] virtual bool createPrivateFolder(const std::string& path,
                                                 const std::string& home) = 0;

  // Removes whatever is there: a file, a link, or a folder with all that it holds. True when
  // nothing is there any more.
  virtual bool removeAll(const std::string& path) = 0;

  // Moves a file or a folder, to another disk too. None when it is done; else a description for
  // the user, and `from` is as it was.
  [[nodiscard]] virtual std::optional<std::string> move(const std::string& from,
                                                        const std::string& to,
                                                        const DiskCrossing& crossing) = 0;

  // What is in a folder; empty when it cannot be read.
  [[nodiscard]] virtual std::vector<std::string> names(const std::string& folder) const = 0;

  // Every symbolic link in the folder and in the folders it holds; none when not all of them
  // could be read. Links are not followed.
  [[nodiscard]] virtual std::optional<std::vector<SymbolicLink>> symbolicLinks(
      const std::string& folder) const = 0;
};

}  // namespace torvane
