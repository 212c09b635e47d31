#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/posix/posix_file_system.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

class PosixPrivateFolder : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::string home = folder.path();
  PosixFileSystem files;

  bool create(const std::string& path) { return files.createPrivateFolder(path, home); }

  static void put(const std::string& path, const std::string& text) { std::ofstream(path) << text; }
  static mode_t mode(const std::string& path) {
    struct stat found {};
    return ::lstat(path.c_str(), &found) == 0 ? found.st_mode & 07777U : 0;
  }
  // Whether it is private with this mode of a folder on the way to it.
  bool isPrivateWith(const std::string& above, mode_t mode, const std::string& path) {
    EXPECT_EQ(::chmod(above.c_str(), mode), 0);
    const bool isPrivate = create(path);
    EXPECT_EQ(::chmod(above.c_str(), 0700), 0);
    return isPrivate;
  }
};

TEST_F(PosixPrivateFolder, PrivateFolderIsMadeWithThoseAboveIt) {
  EXPECT_TRUE(create(folder / "a/b/c"));
  for (const char* path : {"a", "a/b", "a/b/c"}) EXPECT_EQ(mode(folder / path), 0700U);
}

TEST_F(PosixPrivateFolder, PrivateFolderMayBeThereAlready) {
  ASSERT_TRUE(create(folder / "a"));
  EXPECT_TRUE(create(folder / "a"));
}

TEST_F(PosixPrivateFolder, FolderThatOthersMayEnterIsNotPrivate) {
  for (const mode_t open : {0755U, 0710U, 0701U, 0777U}) {
    ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
    ASSERT_EQ(::chmod((folder / "a").c_str(), open), 0);
    EXPECT_FALSE(create(folder / "a"));
    fs::remove(folder / "a");
  }
}

TEST_F(PosixPrivateFolder, FolderThatOthersMayReplaceIsNotPrivate) {
  ASSERT_TRUE(create(folder / "a/b"));
  ASSERT_EQ(::chmod((folder / "a").c_str(), 0777), 0);
  EXPECT_FALSE(create(folder / "a/b"));
}

TEST_F(PosixPrivateFolder, FolderOfAnotherUserIsNotPrivate) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a folder away";
  ASSERT_TRUE(create(folder / "a/b"));
  ASSERT_EQ(::chown((folder / "a/b").c_str(), kNobody, kNobody), 0);
  EXPECT_FALSE(create(folder / "a/b"));
  ASSERT_EQ(::chown((folder / "a").c_str(), kNobody, kNobody), 0);
  EXPECT_FALSE(create(folder / "a/c"));
}

TEST_F(PosixPrivateFolder, LinkOrFileInAFoldersPlaceIsNotPrivate) {
  ASSERT_TRUE(create(folder / "real"));
  fs::create_symlink(folder / "real", folder / "link");
  put(folder / "file", "");
  EXPECT_FALSE(create(folder / "link"));
  EXPECT_FALSE(create(folder / "file"));
  EXPECT_FALSE(create(folder / "file/below"));
}

TEST_F(PosixPrivateFolder, MayHaveItsGroupFromTheFolderAbove) {
  ASSERT_TRUE(create(folder / "a"));
  EXPECT_TRUE(isPrivateWith(folder / "a", 02700, folder / "a/b"));
  EXPECT_TRUE(isPrivateWith(folder / "a/b", 02700, folder / "a/b"));
  EXPECT_FALSE(isPrivateWith(folder / "a/b", 02750, folder / "a/b"));
}

TEST_F(PosixPrivateFolder, IsNoneWhereOthersMayWriteToAnyFolderAboveIt) {
  ASSERT_TRUE(create(folder / "a/b/c/d"));
  for (const char* above : {"a", "a/b", "a/b/c", ""}) {
    for (const mode_t open : {0777U, 0775U, 0770U, 0720U, 0702U}) {
      EXPECT_FALSE(isPrivateWith(folder / above, open, folder / "a/b/c/d")) << above << open;
    }
    EXPECT_TRUE(isPrivateWith(folder / above, 0755, folder / "a/b/c/d")) << above;
  }
}

// Others may make something there, but not rename or remove what is ours.
TEST_F(PosixPrivateFolder, MayBeBelowAStickyFolder) {
  ASSERT_TRUE(create(folder / "a/b/c"));
  EXPECT_TRUE(isPrivateWith(folder / "a/b", 01777, folder / "a/b/c"));
  EXPECT_TRUE(isPrivateWith(folder / "a", 01777, folder / "a/b/c"));
}

TEST_F(PosixPrivateFolder, IsNoneBelowAFolderOfAnotherUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a folder away";
  ASSERT_TRUE(create(folder / "a/b/c"));
  ASSERT_EQ(::chown((folder / "a").c_str(), kNobody, kNobody), 0);
  EXPECT_FALSE(create(folder / "a/b/c"));
}

TEST_F(PosixPrivateFolder, TakesWhatIsAboveTheHomeFolderAsItIs) {
  home = folder / "homes/anna";
  ASSERT_TRUE(create(folder / "homes/anna/cache/work"));
  EXPECT_TRUE(isPrivateWith(folder / "homes", 0777, folder / "homes/anna/cache/work"));
  EXPECT_FALSE(isPrivateWith(home, 0777, folder / "homes/anna/cache/work"));
  home = folder / "homes/another";
  EXPECT_FALSE(isPrivateWith(folder / "homes", 0777, folder / "homes/anna/cache/work"));
}

TEST_F(PosixPrivateFolder, MayBeBehindLinksOfTheUsersOwn) {
  ASSERT_TRUE(create(folder / "disk/cache"));
  ASSERT_TRUE(create(folder / "home"));
  home = folder / "home";
  fs::create_symlink(folder / "disk/cache", folder / "home/cache");
  fs::create_symlink("../home/cache", folder / "disk/again");
  EXPECT_TRUE(create(folder / "home/cache/work"));
  EXPECT_TRUE(create(folder / "disk/again/work"));
  EXPECT_EQ(mode(folder / "disk/cache/work"), 0700U);
}

TEST_F(PosixPrivateFolder, IsNoneWhereOthersMayTurnALinkOnTheWay) {
  ASSERT_TRUE(create(folder / "disk/cache/work"));
  ASSERT_TRUE(create(folder / "links"));
  fs::create_symlink(folder / "disk/cache", folder / "links/cache");
  fs::create_symlink("links/cache", folder / "cache");
  ASSERT_TRUE(create(folder / "cache/work"));
  for (const char* open : {"links", "disk", "disk/cache"}) {
    EXPECT_FALSE(isPrivateWith(folder / open, 0777, folder / "cache/work")) << open;
  }
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a link away";
  ASSERT_EQ(::lchown((folder / "links/cache").c_str(), kNobody, kNobody), 0);
  EXPECT_FALSE(create(folder / "cache/work"));
}

TEST_F(PosixPrivateFolder, IsNoneBehindLinksThatLeadNowhere) {
  fs::create_symlink("b", folder / "a");
  fs::create_symlink("a", folder / "b");
  EXPECT_FALSE(create(folder / "a/work"));
  EXPECT_FALSE(create(std::string("a\0b", 3)));
}

}  // namespace
}  // namespace torvane
