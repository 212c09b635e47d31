#include "platform/linux/xdg_login_item.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

class XdgLoginItemTest : public testing::Test {
 protected:
  void write(const std::string& text) {
    std::filesystem::create_directories(autostart);
    std::ofstream(file) << text;
  }
  std::string text() const {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryFolder folder;
  const std::string autostart = folder.path() + "/config/autostart";
  const std::string file = autostart + "/torvane-p2p-helper.desktop";
  XdgLoginItem item{autostart, "/opt/Torvane P2P Helper/bin/torvane-p2p-helper"};
};

TEST_F(XdgLoginItemTest, IsNotRegisteredWithoutAFile) {
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_FALSE(std::filesystem::exists(autostart));
}

TEST_F(XdgLoginItemTest, RegistersAndUnregisters) {
  EXPECT_EQ(item.registerItem(), std::nullopt);
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(std::filesystem::is_empty(autostart));
}

TEST_F(XdgLoginItemTest, WhatTheUserSwitchedOffIsNotEnabled) {
  EXPECT_EQ(item.registerItem(), std::nullopt);
  const std::string enabled = text();
  write(enabled + "Hidden=true\n");
  EXPECT_EQ(item.status(), LoginItemStatus::requiresApproval);
  write(enabled + "X-GNOME-Autostart-enabled=false\n");
  EXPECT_EQ(item.status(), LoginItemStatus::requiresApproval);
  EXPECT_EQ(item.registerItem(), std::nullopt);
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

TEST_F(XdgLoginItemTest, AskingNeverChangesTheFile) {
  const std::string off = "[Desktop Entry]\nExec=/opt/h\nHidden=true\n";
  write(off);
  for (int i = 0; i < 3; ++i) static_cast<void>(item.status());
  EXPECT_EQ(text(), off);
}

TEST_F(XdgLoginItemTest, ProgramThatHasMovedIsNotFound) {
  EXPECT_EQ(item.registerItem(), std::nullopt);
  XdgLoginItem moved(autostart, "/home/ann/Torvane P2P Helper/bin/torvane-p2p-helper");
  EXPECT_EQ(moved.status(), LoginItemStatus::notFound);
  EXPECT_EQ(moved.registerItem(), std::nullopt);
  EXPECT_EQ(moved.status(), LoginItemStatus::enabled);
  EXPECT_EQ(item.status(), LoginItemStatus::notFound);
}

TEST_F(XdgLoginItemTest, FileEditedByTheUserStaysEnabled) {
  write(
      "[Desktop Entry]\nName=Mine\n"
      "Exec=sh -c wait \"/opt/Torvane P2P Helper/bin/torvane-p2p-helper\"\n");
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

// Folders where files should be: what root, too, cannot write to.
TEST_F(XdgLoginItemTest, FailuresNameTheFileAndTheReason) {
  std::filesystem::create_directories(file + "/in the way");
  EXPECT_EQ(item.registerItem(), file + ": Is a directory");
  EXPECT_EQ(item.unregisterItem(), file + ": Is a directory");
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST_F(XdgLoginItemTest, FolderThatCannotBeMadeIsAFailure) {
  std::ofstream(folder.path() + "/config") << "a file";
  EXPECT_EQ(item.registerItem(), file + ": Not a directory");
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST_F(XdgLoginItemTest, NothingToUnregisterIsNoFailure) {
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
}

TEST(AutostartFolderTest, LiesInTheUsersFolderForSettings) {
  ::setenv("XDG_CONFIG_HOME", "/somewhere", 1);
  EXPECT_EQ(autostartFolder("/home/ann"), "/somewhere/autostart");
  ::setenv("XDG_CONFIG_HOME", "relative", 1);
  EXPECT_EQ(autostartFolder("/home/ann"), "/home/ann/.config/autostart");
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(autostartFolder("/home/ann"), "/home/ann/.config/autostart");
}

}  // namespace
}  // namespace torvane
