#include "platform/linux/folder_bundle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

class FolderBundleTest : public testing::Test {
 protected:
  FolderBundleTest() {
    std::filesystem::create_directories(path + "/Resources");
    std::ofstream(path + "/Resources/torvane.py") << "pass";
    std::ofstream(path + "/Info.json") << R"({"CFBundleVersion":"7","Number":7})";
  }

  TemporaryFolder folder;
  const std::string path = folder / "Torvane P2P Helper";
};

TEST_F(FolderBundleTest, FindsItsResources) {
  const FolderBundle bundle(path);
  EXPECT_EQ(bundle.path(), path);
  EXPECT_EQ(bundle.pathForResource("torvane", "py"), path + "/Resources/torvane.py");
  EXPECT_EQ(bundle.pathForResource("torvane", "txt"), std::nullopt);
}

TEST_F(FolderBundleTest, ReadsItsInformation) {
  const FolderBundle bundle(path);
  EXPECT_EQ(bundle.infoValue("CFBundleVersion"), JsonValue("7"));
  EXPECT_EQ(bundle.infoValue("Number"), JsonValue(7));
  EXPECT_EQ(bundle.infoValue("CFBundleIdentifier"), std::nullopt);
}

TEST_F(FolderBundleTest, InformationThatCannotBeReadIsEmpty) {
  std::ofstream(path + "/Info.json") << "{";
  EXPECT_EQ(FolderBundle(path).infoValue("CFBundleVersion"), std::nullopt);
  EXPECT_EQ(FolderBundle(folder / "nowhere").infoValue("CFBundleVersion"), std::nullopt);
}

TEST_F(FolderBundleTest, NamesItsProgram) {
  EXPECT_EQ(FolderBundle(path).executablePath(), std::nullopt);
  std::ofstream(path + "/Info.json") << R"({"CFBundleExecutable":"helper"})";
  EXPECT_EQ(FolderBundle(path).executablePath(), path + "/bin/helper");
}

TEST(MainBundlePathTest, IsTwoFoldersAboveTheProgram) {
  const auto program = std::filesystem::canonical("/proc/self/exe");
  EXPECT_EQ(mainBundlePath(), program.parent_path().parent_path());
}

}  // namespace
}  // namespace torvane
