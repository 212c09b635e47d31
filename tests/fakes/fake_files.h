#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "ports/file_system.h"

namespace torvane {

// Files in memory. An entry of `unwritable` or `unreadable` cannot be opened that way, one of
// `immovable` cannot be moved, one of `foreign` is a folder of another user.
class FakeFileSystem final : public FileSystem {
 public:
  std::map<std::string, std::shared_ptr<std::string>> contents;
  std::set<std::string> folders;
  std::set<std::string> unwritable;
  std::set<std::string> unreadable;
  std::set<std::string> immovable;
  std::set<std::string> foreign;
  std::map<std::string, std::string> links;  // → target
  std::set<std::string> disks;               // folders that are another disk
  std::function<void()> whileCrossing;       // in the middle of a move between two

  void put(const std::string& path, std::string text) {
    contents[path] = std::make_shared<std::string>(std::move(text));
  }
  [[nodiscard]] std::string text(const std::string& path) const {
    const auto found = contents.find(path);
    return found != contents.end() ? *found->second : std::string();
  }

  // The files and links of a folder with their relative paths, in order: what a copy of it holds.
  [[nodiscard]] std::map<std::string, std::string> tree(const std::string& folder) const {
    std::map<std::string, std::string> found;
    forEach(contents, folder, [&](const auto& path, const auto& text) { found[path] = *text; });
    forEach(links, folder, [&](const auto& path, const auto& to) { found[path] = "→ " + to; });
    return found;
  }

  [[nodiscard]] bool exists(const std::string& path) const override {
    return contents.count(path) != 0 || folders.count(path) != 0 || links.count(path) != 0 ||
           !tree(path).empty();
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

  [[nodiscard]] bool isFolder(const std::string& path) const override {
    return contents.count(path) == 0 && links.count(path) == 0 && exists(path);
  }
  [[nodiscard]] bool createPrivateFolder(const std::string& path, const std::string&) override {
    if (foreign.count(path) != 0 || contents.count(path) != 0) return false;
    folders.insert(path);
    return true;
  }
  bool removeAll(const std::string& path) override {
    if (foreign.count(path) != 0) return false;
    removeTree(contents, path);
    removeTree(links, path);
    const auto isWithin = [&](const std::string& each) { return relative(each, path).has_value(); };
    std::erase_if(folders, isWithin);
    return true;
  }
  [[nodiscard]] std::optional<std::string> move(const std::string& from, const std::string& to,
                                                const DiskCrossing& crossing) override {
    if (immovable.count(from) != 0) return "Permission denied.";
    if (!exists(from)) return "No such file or directory.";
    if (exists(to)) return "File exists.";
    const bool isCrossing = areOnDifferentDisks(from, to);
    if (isCrossing && whileCrossing) whileCrossing();
    if (isCrossing && crossing.isWanted && !crossing.isWanted()) return "Operation canceled.";
    copyTree(from, to);
    if (crossing.original && isCrossing) copyTree(from, *crossing.original);
    removeAll(from);
    return std::nullopt;
  }
  [[nodiscard]] std::vector<std::string> names(const std::string& folder) const override {
    std::set<std::string> found;
    const auto add = [&](const std::string& path, const auto&) {
      if (!path.empty()) found.insert(path.substr(0, path.find('/')));
    };
    forEach(contents, folder, add);
    forEach(links, folder, add);
    for (const auto& each : folders) add(relative(each, folder).value_or(""), each);
    return {found.begin(), found.end()};
  }
  [[nodiscard]] std::optional<std::vector<SymbolicLink>> symbolicLinks(
      const std::string& folder) const override {
    if (unreadable.count(folder) != 0 || !isFolder(folder)) return std::nullopt;
    std::vector<SymbolicLink> found;
    forEach(links, folder, [&](const auto& path, const auto& to) { found.push_back({path, to}); });
    return found;
  }

  void copyTree(const std::string& from, const std::string& to) {
    const auto within = [&](const std::string& path) {
      return path.empty() ? to : to + "/" + path;
    };
    const auto files = contents;
    const auto allLinks = links;
    if (folders.count(from) != 0) folders.insert(to);
    forEach(files, from, [&](const auto& path, const auto& text) { put(within(path), *text); });
    forEach(allLinks, from,
            [&](const auto& path, const auto& target) { links[within(path)] = target; });
  }

 private:
  [[nodiscard]] bool areOnDifferentDisks(const std::string& one, const std::string& other) const {
    return std::any_of(disks.begin(), disks.end(), [&](const std::string& disk) {
      return relative(one, disk).has_value() != relative(other, disk).has_value();
    });
  }
  // The part of a path below a folder; empty for the folder itself, none outside it.
  static std::optional<std::string> relative(const std::string& path, const std::string& folder) {
    if (path == folder) return std::string();
    if (!path.starts_with(folder + "/")) return std::nullopt;
    return path.substr(folder.size() + 1);
  }
  template <typename Map, typename Visit>
  static void forEach(const Map& map, const std::string& folder, Visit visit) {
    for (const auto& [path, value] : map) {
      if (const auto part = relative(path, folder)) visit(*part, value);
    }
  }
  template <typename Map>
  static void removeTree(Map& map, const std::string& folder) {
    std::erase_if(map, [&](const auto& entry) { return relative(entry.first, folder); });
  }

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
