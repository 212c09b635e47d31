#include "platform/linux/qt_workspace.h"

#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QTextBrowser>
#include <QUrl>
#include <filesystem>
#include <fstream>

#include "support/temporary_folder.h"

namespace torvane {
namespace {

// Has a slot for a URL.
class Reader final : public QTextBrowser {
 public:
  QVariant loadResource(int, const QUrl&) override { return "text"; }
};

class QtWorkspaceTest : public testing::Test {
 protected:
  // The trash of the user's folder is for what lies on its disk; others have their own.
  void SetUp() override {
    qputenv("XDG_DATA_HOME", (folder / "data").c_str());
    qputenv("HOME", folder.path().c_str());
  }
  void TearDown() override {
    qunsetenv("XDG_DATA_HOME");
    qputenv("HOME", home_);
  }

  TemporaryFolder folder;
  QtWorkspace workspace;

 private:
  const QByteArray home_ = qgetenv("HOME");
};

TEST_F(QtWorkspaceTest, MovesAFolderToTheTrashFromWhereItCanComeBack) {
  const std::string bundle = folder.path() + "/Old.app";
  std::filesystem::create_directories(bundle);
  std::ofstream(bundle + "/Info.json") << "{}";
  EXPECT_TRUE(workspace.moveToTrash(bundle));
  EXPECT_FALSE(std::filesystem::exists(bundle));
  EXPECT_TRUE(std::filesystem::exists(folder.path() + "/data/Trash/files/Old.app/Info.json"));
  EXPECT_TRUE(std::filesystem::exists(folder.path() + "/data/Trash/info/Old.app.trashinfo"));
}

TEST_F(QtWorkspaceTest, WhatIsNotThereCannotBeTrashed) {
  EXPECT_FALSE(workspace.moveToTrash(folder.path() + "/nothing"));
}

TEST_F(QtWorkspaceTest, OpensAUrlAndNothingElse) {
  Reader reader;
  QDesktopServices::setUrlHandler("torvane-test", &reader, "setSource");
  workspace.openURL("torvane-test:a b");
  workspace.openURL("torvane-test://[");
  workspace.openURL("");
  EXPECT_TRUE(reader.source().isEmpty());
  workspace.openURL("torvane-test:settings?pane");
  EXPECT_EQ(reader.source(), QUrl("torvane-test:settings?pane"));
  QDesktopServices::unsetUrlHandler("torvane-test");
}

}  // namespace
}  // namespace torvane
