#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "engine/file_system.h"

namespace torvane {

// Files in memory. An entry of `unwritable` or `unreadable` cannot be opened that way.
class FakeFileSystem final : public FileSystem {
 public:
  std::map<std::string, std::shared_ptr<std::string>> contents;
  std::set<std::string> folders;
  std::set<std::string> unwritable;
  std::set<std::string> unreadable;

  void put(const std::string& path, std::string text) {
    contents[path] = std::make_shared<std::string>(std::move(text));
  }
  [[nodiscard]] std::string text(const std::string& path) const {
    const auto found = contents.find(path);
    return found != contents.end() ? *found->second : std::string();
  }

  [[nodiscard]] bool exists(const std::string& path) const override {
    return contents.count(path) != 0 || folders.count(path) != 0;
  }
  [[nodiscard]] std::optional<std::uint64_t> fileSize(const std::string& path) const override {
    const auto found = contents.find(path);
    if (found == contents.end()) return std::nullopt;
    return found->second->size();
  }
  bool createDirectories(const std::string& path) override {
    folders.insert(path);
    return true;
  }
  bool createFile(const std::string& path) override {
    if (unwritable.count(path) != 0) return false;
    put(path, "");
    return true;
  }
  bool remove(const std::string& path) override { return contents.erase(path) != 0; }

  [[nodiscard]] std::unique_ptr<FileHandle> openForWriting(const std::string& path) override {
    return open(path, unwritable);
  }
  [[nodiscard]] std::unique_ptr<FileHandle> openForReading(const std::string& path) override {
    return open(path, unreadable);
  }

 private:
  class FakeFileHandle final : public FileHandle {
   public:
    explicit FakeFileHandle(std::shared_ptr<std::string> text) : text_(std::move(text)) {}

    [[nodiscard]] std::uint64_t offset() const override { return offset_; }
    bool seek(std::uint64_t offset) override {
      offset_ = offset;
      return true;
    }
    bool seekToEnd() override { return seek(text_->size()); }
    bool write(std::string_view bytes) override {
      text_->append(bytes);
      offset_ = text_->size();
      return true;
    }
    [[nodiscard]] Bytes read(std::size_t most) override {
      if (offset_ >= text_->size()) return {};
      const auto part = std::string_view(*text_).substr(offset_, most);
      offset_ += part.size();
      return toBytes(part);
    }
    [[nodiscard]] int descriptor() const override { return 77; }

   private:
    std::shared_ptr<std::string> text_;
    std::uint64_t offset_ = 0;
  };

  [[nodiscard]] std::unique_ptr<FileHandle> open(const std::string& path,
                                                 const std::set<std::string>& refused) const {
    const auto found = contents.find(path);
    if (found == contents.end() || refused.count(path) != 0) return nullptr;
    return std::make_unique<FakeFileHandle>(found->second);
  }
};

}  // namespace torvane
