#include "platform/posix/posix_file_system.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

class PosixFileSystemTest : public testing::Test {
 protected:
  void put(const std::string& path, std::string_view text) {
    ASSERT_TRUE(files.createFile(path));
    const auto handle = files.openForWriting(path);
    ASSERT_NE(handle, nullptr);
    ASSERT_TRUE(handle->write(text));
  }

  std::string get(const std::string& path) {
    const auto handle = files.openForReading(path);
    return handle ? std::string(asText(handle->read(1 << 20))) : "<not opened>";
  }

  TemporaryFolder folder;
  PosixFileSystem files;
};

TEST_F(PosixFileSystemTest, CreatesAnEmptyFile) {
  EXPECT_FALSE(files.exists(folder / "a"));
  EXPECT_TRUE(files.createFile(folder / "a"));
  EXPECT_TRUE(files.exists(folder / "a"));
  EXPECT_EQ(files.fileSize(folder / "a"), 0U);
}

TEST_F(PosixFileSystemTest, CreatingAgainEmptiesTheFile) {
  put(folder / "a", "text");
  EXPECT_TRUE(files.createFile(folder / "a"));
  EXPECT_EQ(files.fileSize(folder / "a"), 0U);
}

TEST_F(PosixFileSystemTest, CreatesMissingFoldersOnTheWay) {
  EXPECT_TRUE(files.createDirectories(folder / "a/b/c d"));
  EXPECT_TRUE(files.createFile(folder / "a/b/c d/e"));
  EXPECT_TRUE(files.createDirectories(folder / "a/b/c d"));
}

TEST_F(PosixFileSystemTest, ReportsAFolderThatCannotBeMade) {
  put(folder / "file", "");
  EXPECT_FALSE(files.createDirectories(folder / "file"));
  EXPECT_FALSE(files.createDirectories(folder / "file/below"));
}

TEST_F(PosixFileSystemTest, RemovesOneFileButNoFolder) {
  put(folder / "a", "text");
  ASSERT_TRUE(files.createDirectories(folder / "b"));
  EXPECT_TRUE(files.remove(folder / "a"));
  EXPECT_FALSE(files.exists(folder / "a"));
  EXPECT_FALSE(files.remove(folder / "a"));
  EXPECT_FALSE(files.remove(folder / "b"));
  EXPECT_TRUE(files.exists(folder / "b"));
}

TEST_F(PosixFileSystemTest, KnowsTheSizeOfFilesOnly) {
  put(folder / "a", "seven b");
  EXPECT_EQ(files.fileSize(folder / "a"), 7U);
  EXPECT_FALSE(files.fileSize(folder / "missing").has_value());
  EXPECT_FALSE(files.fileSize(folder / ".").has_value());
}

TEST_F(PosixFileSystemTest, OpensNothingThatIsMissing) {
  EXPECT_EQ(files.openForReading(folder / "a"), nullptr);
  EXPECT_EQ(files.openForWriting(folder / "a"), nullptr);
  EXPECT_FALSE(files.exists(folder / "a"));
}

TEST_F(PosixFileSystemTest, WritingStartsAtZeroAndGoesToTheEnd) {
  put(folder / "a", "old,");
  const auto handle = files.openForWriting(folder / "a");
  EXPECT_EQ(handle->offset(), 0U);
  EXPECT_TRUE(handle->seekToEnd());
  EXPECT_EQ(handle->offset(), 4U);
  EXPECT_TRUE(handle->seek(0));
  EXPECT_TRUE(handle->write("new"));
  EXPECT_EQ(handle->offset(), 7U);
  EXPECT_EQ(get(folder / "a"), "old,new");
}

TEST_F(PosixFileSystemTest, TwoWritersDoNotOverwriteEachOther) {
  put(folder / "a", "");
  const auto first = files.openForWriting(folder / "a");
  const auto second = files.openForWriting(folder / "a");
  EXPECT_TRUE(first->write("1"));
  EXPECT_TRUE(second->write("2"));
  EXPECT_TRUE(first->write("3"));
  EXPECT_EQ(get(folder / "a"), "123");
}

TEST_F(PosixFileSystemTest, ReadsInPiecesUpToTheEnd) {
  put(folder / "a", "abcdef");
  const auto handle = files.openForReading(folder / "a");
  EXPECT_EQ(asText(handle->read(4)), "abcd");
  EXPECT_EQ(handle->offset(), 4U);
  EXPECT_EQ(asText(handle->read(4)), "ef");
  EXPECT_TRUE(handle->read(4).empty());
}

TEST_F(PosixFileSystemTest, ReadsMoreThanOneChunk) {
  const std::string text(200'000, 'x');
  put(folder / "a", text);
  EXPECT_EQ(asText(files.openForReading(folder / "a")->read(std::numeric_limits<size_t>::max())),
            text);
}

TEST_F(PosixFileSystemTest, ReadsNothingPastTheEnd) {
  put(folder / "a", "abc");
  const auto handle = files.openForReading(folder / "a");
  EXPECT_TRUE(handle->seek(100));
  EXPECT_TRUE(handle->read(10).empty());
}

TEST_F(PosixFileSystemTest, AnImpossibleOffsetLeavesThePosition) {
  put(folder / "a", "abc");
  const auto handle = files.openForReading(folder / "a");
  ASSERT_TRUE(handle->seek(1));
  EXPECT_FALSE(handle->seek(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(handle->offset(), 1U);
}

TEST_F(PosixFileSystemTest, WritingThroughAReadingHandleFails) {
  put(folder / "a", "abc");
  EXPECT_FALSE(files.openForReading(folder / "a")->write("x"));
  EXPECT_TRUE(files.openForWriting(folder / "a")->read(3).empty());
}

TEST_F(PosixFileSystemTest, RefusesAFifoWithoutWaiting) {
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(files.openForReading(folder / "fifo"), nullptr);
  EXPECT_EQ(files.openForWriting(folder / "fifo"), nullptr);
  EXPECT_FALSE(files.createFile(folder / "fifo"));
}

TEST_F(PosixFileSystemTest, RefusesFoldersAndDevices) {
  EXPECT_EQ(files.openForReading(folder / "."), nullptr);
  EXPECT_EQ(files.openForReading("/dev/null"), nullptr);
  EXPECT_EQ(files.openForWriting("/dev/null"), nullptr);
}

TEST_F(PosixFileSystemTest, RefusesAPathWithAZeroByte) {
  put(folder / "a", "abc");
  const std::string path = (folder / "a") + std::string("\0b", 2);
  EXPECT_FALSE(files.exists(path));
  EXPECT_FALSE(files.createFile(path));
  EXPECT_EQ(files.openForReading(path), nullptr);
  EXPECT_FALSE(files.remove(path));
  EXPECT_TRUE(files.exists(folder / "a"));
}

TEST_F(PosixFileSystemTest, HandlesAreCloseOnExecAndClosed) {
  put(folder / "a", "abc");
  auto handle = files.openForWriting(folder / "a");
  const int descriptor = handle->descriptor();
  EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  EXPECT_EQ(::fcntl(descriptor, F_GETFL) & (O_APPEND | O_NONBLOCK), O_APPEND);
  handle.reset();
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

}  // namespace
}  // namespace torvane
