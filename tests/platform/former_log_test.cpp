#include "platform/linux/former_log.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

namespace fs = std::filesystem;

class FormerLog : public testing::Test {
 protected:
  static void write(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << text;
  }
  static std::string read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  void move() { moveFormerLog(home.path(), home / ".local/state/torvane-p2p-helper"); }

  TemporaryFolder home;
  const std::string former = home / "Library/Logs/Torvane P2P Helper/engine.log";
  const std::string log = home / ".local/state/torvane-p2p-helper/engine.log";
};

TEST_F(FormerLog, IsMovedAndLeavesNoLibrary) {
  write(former, "before\n");
  move();
  EXPECT_EQ(read(log), "before\n");
  EXPECT_FALSE(fs::exists(home / "Library"));
}

TEST_F(FormerLog, WhatOthersKeepThereStays) {
  write(former, "before\n");
  write(home / "Library/Fonts/one.ttf", "font");
  move();
  EXPECT_EQ(read(log), "before\n");
  EXPECT_FALSE(fs::exists(home / "Library/Logs"));
  EXPECT_EQ(read(home / "Library/Fonts/one.ttf"), "font");
}

TEST_F(FormerLog, IsMovedOnce) {
  write(former, "of an older program\n");
  write(log, "now\n");
  move();
  EXPECT_EQ(read(log), "now\n");
  EXPECT_EQ(read(former), "of an older program\n");
}

TEST_F(FormerLog, WithoutOneNothingIsMade) {
  fs::create_directories(home / "Library");
  move();
  EXPECT_TRUE(fs::exists(home / "Library"));
  EXPECT_FALSE(fs::exists(home / ".local"));
}

TEST_F(FormerLog, ALinkIsLeftAlone) {
  write(home / "notes", "mine\n");
  fs::create_directories(fs::path(former).parent_path());
  fs::create_symlink(home / "notes", former);
  move();
  EXPECT_TRUE(fs::is_symlink(former));
  EXPECT_FALSE(fs::exists(log));
}

}  // namespace
}  // namespace torvane
