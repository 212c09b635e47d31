#include "platform/linux/private_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

class PrivateFile : public testing::Test {
 protected:
  static mode_t modeOf(const fs::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
  }
  std::size_t entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_ / "file";
};

TEST_F(PrivateFile, LiesInFoldersForItsUserAlone) {
  const fs::path inner = folder_ / "a/b";
  EXPECT_TRUE(makePrivateFolder(inner));
  EXPECT_EQ(modeOf(inner), 0700U);
  EXPECT_EQ(modeOf(inner.parent_path()), 0700U);
  EXPECT_TRUE(makePrivateFolder(inner));
  EXPECT_TRUE(makePrivateFolder(""));
  EXPECT_FALSE(makePrivateFolder("/proc/none"));
}

TEST_F(PrivateFile, IsReplacedAsAWhole) {
  EXPECT_TRUE(writePrivateFile(file_, "a long old text"));
  EXPECT_TRUE(writePrivateFile(file_, "new"));
  EXPECT_EQ(readSmallFile(file_, 3), "new");
  EXPECT_EQ(modeOf(file_), 0600U);
  EXPECT_EQ(entries(), 1U);
  EXPECT_FALSE(writePrivateFile(file_ + "/x", "no folder"));
}

TEST_F(PrivateFile, IsCreatedOnce) {
  EXPECT_TRUE(createPrivateFile(file_, "first"));
  EXPECT_FALSE(createPrivateFile(file_, "second"));
  EXPECT_EQ(readSmallFile(file_, 100), "first");
  EXPECT_EQ(modeOf(file_), 0600U);
  EXPECT_EQ(entries(), 1U);
}

TEST_F(PrivateFile, IsReadUpToALimitAndOnlyIfItIsAFile) {
  EXPECT_TRUE(writePrivateFile(file_, std::string(100'000, 'x')));
  EXPECT_EQ(readSmallFile(file_, 100'000)->size(), 100'000U);
  EXPECT_FALSE(readSmallFile(file_, 99'999));
  EXPECT_FALSE(readSmallFile(folder_.path(), 10));
  EXPECT_FALSE(readSmallFile(file_ + "2", 10));
  ASSERT_EQ(::mkfifo((file_ + ".pipe").c_str(), 0600), 0);
  EXPECT_FALSE(readSmallFile(file_ + ".pipe", 10));  // and does not wait for a writer
}

}  // namespace
}  // namespace torvane
