#include "platform/linux/autostart_entry.h"

#include <gtest/gtest.h>

namespace torvane {
namespace {

using Command = std::vector<std::string>;

TEST(AutostartEntryTest, IsADesktopEntryThatStartsTheProgram) {
  EXPECT_EQ(autostartEntry("/opt/Torvane P2P Helper/bin/torvane-p2p-helper"),
            "[Desktop Entry]\nType=Application\nName=Torvane P2P Helper\n"
            "Comment=Lets an iPad run the presentation on this computer\n"
            "Exec=\"/opt/Torvane P2P Helper/bin/torvane-p2p-helper\"\n"
            "TryExec=/opt/Torvane P2P Helper/bin/torvane-p2p-helper\n"
            "Icon=torvane-p2p-helper\nTerminal=false\n");
}

TEST(AutostartEntryTest, EveryPathComesBackAsItWas) {
  for (const std::string path :
       {"/opt/helper", "/with space/helper", "/100% \"quoted\"/helper", "/$HOME/`x`/helper",
        "/back\\slash\\/helper", "/two\nlines\t/helper", "/ä—/helper", "/%U/%%/helper",
        "/a=b;c#/h"}) {
    EXPECT_EQ(parseAutostartEntry(autostartEntry(path)).command, Command{path}) << path;
  }
}

// The double escape of the Desktop Entry Specification: a backslash takes four.
TEST(AutostartEntryTest, EscapesTwice) {
  const auto entry = autostartEntry("/a\\b$c/h");
  EXPECT_NE(entry.find(R"(Exec="/a\\\\b\\$c/h")"), std::string::npos) << entry;
  EXPECT_NE(entry.find("TryExec=/a\\\\b$c/h\n"), std::string::npos) << entry;
}

TEST(AutostartEntryTest, ReadsWhatOthersWrote) {
  const auto entry = parseAutostartEntry(
      "# comment\n\n[Desktop Entry]\r\nExec = env A=1 \"/opt/x y/h\" --flag\nHidden=false\n"
      "[Desktop Action New]\nExec=/other\nHidden=true\n");
  EXPECT_EQ(entry.command, (Command{"env", "A=1", "/opt/x y/h", "--flag"}));
  EXPECT_FALSE(entry.isSwitchedOff);
}

TEST(AutostartEntryTest, IsSwitchedOffByEitherKey) {
  EXPECT_TRUE(parseAutostartEntry("[Desktop Entry]\nExec=/h\nHidden=true\n").isSwitchedOff);
  EXPECT_TRUE(
      parseAutostartEntry("[Desktop Entry]\nX-GNOME-Autostart-enabled=false").isSwitchedOff);
  EXPECT_FALSE(parseAutostartEntry("Hidden=true\n[Other]\nHidden=true\n").isSwitchedOff);
}

TEST(AutostartEntryTest, OddTextsHaveNoCommand) {
  for (const char* text : {"", "\n\n", "=", "[Desktop Entry]",
                           "[Desktop Entry]\nExec=", "[Desktop Entry]\nExec=   \n", "Exec=/h\n"}) {
    EXPECT_TRUE(parseAutostartEntry(text).command.empty()) << text;
  }
  EXPECT_EQ(parseAutostartEntry("[Desktop Entry]\nExec=\"/a b").command, Command{"/a b"});
  EXPECT_EQ(parseAutostartEntry("[Desktop Entry]\nExec=/a\\").command, Command{"/a\\"});
  EXPECT_EQ(parseAutostartEntry("[Desktop Entry]\nExec=\"\" /a").command, (Command{"", "/a"}));
}

}  // namespace
}  // namespace torvane
