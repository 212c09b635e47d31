#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/posix/posix_file_system.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

class PosixFolders : public testing::Test {
 protected:
  TemporaryFolder folder;
  PosixFileSystem files;

  static void put(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << text;
  }
  static std::string get(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static mode_t mode(const std::string& path) {
    struct stat found {};
    return ::lstat(path.c_str(), &found) == 0 ? found.st_mode & 07777U : 0;
  }
  void putApplication() {
    put(folder / "a.app/bin/program", "program");
    ::chmod((folder / "a.app/bin/program").c_str(), 0755);
    fs::create_symlink("bin/program", folder / "a.app/link");
  }
};

TEST_F(PosixFolders, OnlyARealFolderIsOne) {
  put(folder / "a/file", "");
  fs::create_symlink("a", folder / "link");
  EXPECT_TRUE(files.isFolder(folder / "a"));
  EXPECT_FALSE(files.isFolder(folder / "link"));
  EXPECT_FALSE(files.isFolder(folder / "a/file"));
  EXPECT_FALSE(files.isFolder(folder / "none"));
}

TEST_F(PosixFolders, RemovesAllAFolderHoldsButNotWhatItsLinksLeadTo) {
  put(folder / "outside/kept", "text");
  putApplication();
  fs::create_symlink(folder / "outside", folder / "a.app/out");
  EXPECT_TRUE(files.removeAll(folder / "a.app"));
  EXPECT_FALSE(files.exists(folder / "a.app"));
  EXPECT_EQ(get(folder / "outside/kept"), "text");
}

TEST_F(PosixFolders, RemovesAFileALinkAndNothing) {
  put(folder / "file", "text");
  fs::create_symlink("file", folder / "link");
  EXPECT_TRUE(files.removeAll(folder / "link"));
  EXPECT_EQ(get(folder / "file"), "text");
  EXPECT_TRUE(files.removeAll(folder / "file"));
  EXPECT_TRUE(files.removeAll(folder / "file"));
}

// An archive may hold such folders. The superuser, who may change them, becomes nobody for it.
TEST_F(PosixFolders, RemovesFoldersThatMayNotBeChanged) {
  constexpr uid_t kNobody = 65534;
  const bool isRoot = ::geteuid() == 0;
  const auto become = [&](uid_t user) { return !isRoot || ::seteuid(user) == 0; };
  put(folder / "a/b/c/file", "text");
  put(folder / "a/b/d/file", "text");
  for (const char* path : {"", "a", "a/b", "a/b/c", "a/b/d"}) {
    ASSERT_TRUE(!isRoot || ::chown((folder / path).c_str(), kNobody, kNobody) == 0);
  }
  ASSERT_EQ(::chmod((folder / "a/b/c").c_str(), 0500), 0);
  ASSERT_EQ(::chmod((folder / "a/b/d").c_str(), 0), 0);
  ASSERT_EQ(::chmod((folder / "a/b").c_str(), 0500), 0);
  ASSERT_TRUE(become(kNobody));
  const bool isRemoved = files.removeAll(folder / "a");
  ASSERT_TRUE(become(0));
  EXPECT_TRUE(isRemoved);
  EXPECT_FALSE(files.exists(folder / "a"));
}

TEST_F(PosixFolders, MovesAFolder) {
  putApplication();
  EXPECT_EQ(files.move(folder / "a.app", folder / "b.app", {}), std::nullopt);
  EXPECT_EQ(get(folder / "b.app/bin/program"), "program");
  EXPECT_FALSE(files.exists(folder / "a.app"));
}

// Another disk than the temporary folder's, on most computers.
class PosixFoldersOnTwoDisks : public PosixFolders {
 protected:
  std::string other = "/dev/shm/torvane-test-" + std::to_string(::getpid());

  void SetUp() override {
    struct stat here {};
    struct stat there {};
    if (::stat("/dev/shm", &there) != 0 || ::stat(folder.path().c_str(), &here) != 0 ||
        here.st_dev == there.st_dev || ::access("/dev/shm", W_OK) != 0) {
      GTEST_SKIP() << "there is no other disk";
    }
  }
  void TearDown() override { fs::remove_all(other); }
};

TEST_F(PosixFoldersOnTwoDisks, LeavesTheOriginalAsideWhereToldTo) {
  putApplication();
  const std::string original = folder / "original";
  EXPECT_EQ(files.move(folder / "a.app", other, {original, {}}), std::nullopt);
  EXPECT_FALSE(files.exists(folder / "a.app"));
  EXPECT_EQ(get(original + "/bin/program"), "program");
  EXPECT_EQ(get(other + "/bin/program"), "program");
}

TEST_F(PosixFoldersOnTwoDisks, WhatCannotBeSetAsideIsWhereItWas) {
  putApplication();
  put(folder / "original/in/the/way", "");
  EXPECT_EQ(files.move(folder / "a.app", other, {folder / "original", {}}), "Directory not empty.");
  EXPECT_EQ(get(folder / "a.app/bin/program"), "program");
  EXPECT_FALSE(files.exists(other));
}

TEST_F(PosixFoldersOnTwoDisks, MovesAFolderToAnotherDisk) {
  putApplication();
  put(folder / "a.app/deep/er/large", std::string(200'000, 'x'));
  ::chmod((folder / "a.app/deep").c_str(), 0750);
  EXPECT_EQ(files.move(folder / "a.app", other, {}), std::nullopt);
  EXPECT_EQ(get(other + "/bin/program"), "program");
  EXPECT_EQ(get(other + "/deep/er/large"), std::string(200'000, 'x'));
  EXPECT_EQ(mode(other + "/deep"), 0750U);
  EXPECT_EQ(mode(other + "/bin/program"), 0755U);
  EXPECT_EQ(fs::read_symlink(other + "/link"), "bin/program");
  EXPECT_TRUE(fs::is_empty(folder.path()));

  put(folder / "taken", "text");
  EXPECT_EQ(files.move(other, folder / "taken", {}), "File exists.");
  ASSERT_EQ(::mkfifo((other + "/pipe").c_str(), 0600), 0);
  EXPECT_EQ(files.move(other, folder / "partly", {}), "Operation not supported.");
  EXPECT_FALSE(files.exists(folder / "partly"));
  EXPECT_EQ(get(folder / "taken"), "text");
  EXPECT_EQ(get(other + "/bin/program"), "program");
}

TEST_F(PosixFoldersOnTwoDisks, StopsWhenItIsNotWantedAnyMoreAndLeavesEverythingAsItWas) {
  putApplication();
  put(folder / "a.app/large", std::string(2'000'000, 'x'));
  int asked = 0;
  const DiskCrossing crossing{folder / "original", [&] { return ++asked < 10; }};
  EXPECT_EQ(files.move(folder / "a.app", other, crossing), "Operation canceled.");
  EXPECT_EQ(asked, 10);
  EXPECT_EQ(get(folder / "a.app/large").size(), 2'000'000U);
  EXPECT_EQ(files.names(folder.path()), std::vector<std::string>{"a.app"});
  EXPECT_FALSE(files.exists(other));
}

TEST_F(PosixFolders, LeavesNoOriginalOnTheSameDisk) {
  putApplication();
  EXPECT_EQ(files.move(folder / "a.app", folder / "b.app", {folder / "original", {}}),
            std::nullopt);
  EXPECT_EQ(get(folder / "b.app/bin/program"), "program");
  EXPECT_FALSE(files.exists(folder / "original"));
}

TEST_F(PosixFolders, TellsTheNamesOfWhatAFolderHolds) {
  putApplication();
  auto names = files.names(folder / "a.app");
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"bin", "link"}));
  EXPECT_TRUE(files.names(folder / "none").empty());
}

TEST_F(PosixFolders, SaysWhyAFolderCannotBeMoved) {
  putApplication();
  EXPECT_EQ(files.move(folder / "none", folder / "b", {}), "No such file or directory.");
  EXPECT_EQ(files.move(folder / "a.app", folder / "none/b", {}), "No such file or directory.");
  EXPECT_EQ(files.move(folder / "a.app", std::string("b\0c", 3), {}), "Invalid argument.");
  EXPECT_EQ(get(folder / "a.app/bin/program"), "program");
}

TEST_F(PosixFolders, FindsEveryLinkOfAFolder) {
  putApplication();
  fs::create_symlink("../../..", folder / "a.app/bin/up");
  fs::create_symlink("/nowhere", folder / "a.app/nowhere");
  put(folder / "outside/deep/file", "");
  fs::create_symlink("deep", folder / "outside/not-followed");
  fs::create_symlink(folder / "outside", folder / "a.app/outside");
  auto links = files.symbolicLinks(folder / "a.app");
  ASSERT_TRUE(links);
  std::sort(links->begin(), links->end(),
            [](const auto& one, const auto& other) { return one.path < other.path; });
  EXPECT_EQ(*links, (std::vector<SymbolicLink>{{"bin/up", "../../.."},
                                               {"link", "bin/program"},
                                               {"nowhere", "/nowhere"},
                                               {"outside", folder / "outside"}}));
}

TEST_F(PosixFolders, HasNoLinksToTellOfWhatIsNoFolder) {
  putApplication();
  EXPECT_EQ(files.symbolicLinks(folder / "none"), std::nullopt);
  EXPECT_EQ(files.symbolicLinks(folder / "a.app/bin/program"), std::nullopt);
  fs::create_symlink("a.app", folder / "b.app");
  EXPECT_EQ(files.symbolicLinks(folder / "b.app"), std::nullopt);
}

}  // namespace
}  // namespace torvane
