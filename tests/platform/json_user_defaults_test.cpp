#include "platform/linux/json_user_defaults.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/own_mounts.h"
#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

class JsonUserDefaultsTest : public testing::Test {
 protected:
  void put(const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << text;
  }

  static std::string get(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  static mode_t mode(const std::string& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  std::vector<std::string> namesBesideTheFile() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TemporaryFolder folder;
  const std::string path = folder / "config/torvane/defaults.json";
};

TEST_F(JsonUserDefaultsTest, IsEmptyAtFirst) {
  const JsonUserDefaults defaults(path);
  EXPECT_EQ(defaults.object("didShowWelcome"), std::nullopt);
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(JsonUserDefaultsTest, ValuesOutliveTheObject) {
  const JsonObject devices = {{"a key", "Anna's “iPad” \\ \n"}, {"", "empty"}};
  {
    JsonUserDefaults defaults(path);
    defaults.setObject("didShowWelcome", true);
    defaults.setObject("pairedDeviceKeys", devices);
    defaults.setObject("tccResetForBinary", "abc");
  }
  const JsonUserDefaults defaults(path);
  EXPECT_EQ(defaults.object("didShowWelcome"), JsonValue(true));
  EXPECT_EQ(defaults.object("pairedDeviceKeys"), JsonValue(devices));
  EXPECT_EQ(defaults.object("tccResetForBinary"), JsonValue("abc"));
}

TEST_F(JsonUserDefaultsTest, RemovedValuesStayRemoved) {
  {
    JsonUserDefaults defaults(path);
    defaults.setObject("a", 1);
    defaults.setObject("b", 2);
    defaults.removeObject("a");
    EXPECT_EQ(defaults.object("a"), std::nullopt);
  }
  const JsonUserDefaults defaults(path);
  EXPECT_EQ(defaults.object("a"), std::nullopt);
  EXPECT_EQ(defaults.object("b"), JsonValue(2));
}

TEST_F(JsonUserDefaultsTest, OnlyTheUserCanReadTheFile) {
  JsonUserDefaults(path).setObject("a", 1);
  EXPECT_EQ(mode(path), 0600U);
  EXPECT_EQ(mode(folder / "config/torvane"), 0700U);
  ::chmod(path.c_str(), 0644);
  JsonUserDefaults(path).setObject("a", 2);
  EXPECT_EQ(mode(path), 0600U);
}

TEST_F(JsonUserDefaultsTest, LeavesNothingElseBehind) {
  JsonUserDefaults defaults(path);
  for (int i = 0; i < 10; ++i) defaults.setObject("a", i);
  EXPECT_EQ(namesBesideTheFile(), (std::vector<std::string>{"defaults.json"}));
}

TEST_F(JsonUserDefaultsTest, ReplacesTheFileAsAWhole) {
  JsonUserDefaults(path).setObject("a", "old");
  std::ifstream openedBefore(path);
  JsonUserDefaults(path).setObject("a", "new");
  const std::string seenByAReader{std::istreambuf_iterator<char>(openedBefore), {}};
  EXPECT_EQ(seenByAReader, R"({"a":"old"})");
  EXPECT_EQ(get(path), R"({"a":"new"})");
}

TEST_F(JsonUserDefaultsTest, BrokenFilesCountAsEmptyAndAreKept) {
  for (const std::string broken : {"", "{", "[]", "{\"a\":1}x", "{\"a\":\"\xff\"}", "null"}) {
    put(broken);
    JsonUserDefaults defaults(path);
    EXPECT_EQ(defaults.object("a"), std::nullopt);
    EXPECT_EQ(get(path + ".broken"), broken);
    defaults.setObject("a", 1);
    EXPECT_EQ(get(path), R"({"a":1})");
  }
}

TEST_F(JsonUserDefaultsTest, AHugeFileCountsAsBroken) {
  const std::string start = R"({"a":")";
  const std::string end = "\"}";
  const std::string fill(JsonUserDefaults::kMaxBytes - start.size() - end.size(), 'x');
  put(start + fill + end);
  EXPECT_TRUE(JsonUserDefaults(path).object("a").has_value());
  put(start + "x" + fill + end);
  EXPECT_FALSE(JsonUserDefaults(path).object("a").has_value());
  EXPECT_TRUE(fs::exists(path + ".broken"));
}

TEST_F(JsonUserDefaultsTest, WhatIsNoFileIsPutAside) {
  fs::create_directories(fs::path(path).parent_path());
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  JsonUserDefaults(path).setObject("a", 1);
  EXPECT_EQ(get(path), R"({"a":1})");
  EXPECT_TRUE(fs::is_fifo(path + ".broken"));
}

TEST_F(JsonUserDefaultsTest, AFailedWriteIsToldAndKeepsTheValueForThisRun) {
  JsonUserDefaults defaults("/proc/no/such/folder/defaults.json");
  EXPECT_FALSE(defaults.setObject("a", 1));
  EXPECT_EQ(defaults.object("a"), JsonValue(1));
  EXPECT_FALSE(defaults.save());
  EXPECT_FALSE(defaults.removeObject("b")) << "what was set before is not written yet";
}

TEST_F(JsonUserDefaultsTest, AWriteThatSucceedsSaysSo) {
  JsonUserDefaults defaults(path);
  EXPECT_TRUE(defaults.save());
  EXPECT_FALSE(fs::exists(path)) << "nothing to write";
  EXPECT_TRUE(defaults.setObject("a", 1));
  EXPECT_TRUE(defaults.removeObject("a"));
}

// It would be read again as broken, and with it everything would be lost.
TEST_F(JsonUserDefaultsTest, NothingIsWrittenThatIsTooLargeToRead) {
  JsonUserDefaults defaults(path);
  ASSERT_TRUE(defaults.setObject("a", 1));
  EXPECT_FALSE(defaults.setObject("b", boost::json::string(JsonUserDefaults::kMaxBytes, 'x')));
  EXPECT_EQ(get(path), R"({"a":1})");
  EXPECT_TRUE(defaults.setObject("b", 2));
  EXPECT_EQ(JsonUserDefaults(path).object("b"), JsonValue(2));
}

// A real disk, with no room left on it.
class JsonUserDefaultsOnAFullDisk : public JsonUserDefaultsTest {
 protected:
  const std::string disk = folder / "config";
  OwnMounts mounts;

  void SetUp() override {
    fs::create_directories(disk);
    if (!mounts.putDisk(disk, 65536)) GTEST_SKIP() << "only the superuser can mount a small disk";
  }
  void fill() {
    std::ofstream ballast(disk + "/ballast", std::ios::app);
    while (ballast << std::string(4096, 'x') << std::flush) {
    }
  }
};

TEST_F(JsonUserDefaultsOnAFullDisk, WhatWasSavedStaysAndWhatWasNotIsSavedOnceThereIsRoom) {
  JsonUserDefaults defaults(path);
  ASSERT_TRUE(defaults.setObject("a", "old"));
  fill();
  EXPECT_FALSE(defaults.setObject("b", "new"));
  EXPECT_FALSE(defaults.save());
  EXPECT_EQ(get(path), R"({"a":"old"})");
  EXPECT_EQ(namesBesideTheFile(), (std::vector<std::string>{"defaults.json"}));
  fs::remove(disk + "/ballast");
  EXPECT_TRUE(defaults.save());
  const JsonUserDefaults read(path);
  EXPECT_EQ(read.object("a"), JsonValue("old"));
  EXPECT_EQ(read.object("b"), JsonValue("new"));
}

TEST_F(JsonUserDefaultsTest, LiesInTheFolderForSettings) {
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(userDefaultsPath("/home/anna"), "/home/anna/.config/torvane/defaults.json");
  ::setenv("XDG_CONFIG_HOME", "/elsewhere", 1);
  EXPECT_EQ(userDefaultsPath("/home/anna"), "/elsewhere/torvane/defaults.json");
  ::setenv("XDG_CONFIG_HOME", "relative", 1);
  EXPECT_EQ(userDefaultsPath("/home/anna"), "/home/anna/.config/torvane/defaults.json");
  ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace torvane
