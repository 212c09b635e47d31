#include "ports/desktop_texts.h"

#include "fakes/helper_test.h"

namespace torvane {
namespace {

using Texts = std::vector<std::string>;

void add(Texts& texts, const AlertContent& alert) {
  texts.insert(texts.end(), {alert.message, alert.informativeText});
  texts.insert(texts.end(), alert.buttons.begin(), alert.buttons.end());
}

// Every one of them: a text that is added does not compile here until it is looked at too.
Texts allOf(const DesktopTexts& of) {
  const auto& [welcome, howItWorks, pairing, engineRunning, engineNotRunning, scriptMissing,
               engineStopped, updateQuestion, namelessComputer] = of;
  Texts texts = {engineRunning,  engineNotRunning, scriptMissing, engineStopped(3, "Why.", "/log"),
                 updateQuestion, namelessComputer};
  for (const auto& alert : {welcome, howItWorks, pairing("iPad")}) add(texts, alert);
  return texts;
}

Texts allOf(const PythonSystem& of) {
  const auto& [evidence, missing, licence, refused] = of;
  return {missing, licence.value_or(""), refused};
}

// What there is on a Mac alone.
Texts foreignWords(const std::string& text) {
  Texts found;
  for (const char* word :
       {"Mac", "macOS", "Apple component", "Xcode", "PowerPoint", "AirDrop", "Bluetooth",
        "menu bar", "Menu bar", "System Settings", "Finder", "Accessibility", "Full Disk Access",
        "no shared", "top right of the screen"}) {
    if (text.find(word) != std::string::npos) found.emplace_back(word);
  }
  return found;
}

// A helper on a Linux desktop, and all that its user gets to read.
class LinuxWords : public HelperTest {
 protected:
  LinuxWords() {
    platform.texts = kLinuxTexts;
    platform.python = kLinuxPython;
    platform.files.put(kPython, "");
  }

  // The menu, the tooltip, and the alerts so far.
  void expectNoForeignWords() {
    Texts read = menuTitles();
    read.push_back(platform.statusBar.shown.icons.back().toolTip);
    for (const auto& alert : platform.alerts.shown) add(read, alert);
    for (const auto& text : read) EXPECT_EQ(foreignWords(text), Texts()) << text;
  }
  bool isInMenu(const std::string& title) {
    const auto titles = menuTitles();
    return std::count(titles.begin(), titles.end(), title) == 1;
  }
};

TEST(DesktopTexts, NoTextOnLinuxSpeaksOfAMac) {
  for (const Texts& texts : {allOf(kLinuxTexts), allOf(kLinuxPython)}) {
    for (const auto& text : texts) EXPECT_EQ(foreignWords(text), Texts()) << text;
  }
}

TEST(DesktopTexts, EveryTextOnLinuxIsThere) {
  for (const auto& text : allOf(kLinuxTexts)) EXPECT_FALSE(text.empty());
}

TEST(DesktopTexts, TheMacsOwnDoSpeakOfIt) {
  std::size_t found = 0;
  for (const auto& text : allOf(kMacTexts)) found += foreignWords(text).size();
  EXPECT_GT(found, 10U);
}

TEST_F(LinuxWords, WelcomesAndExplains) {
  platform.defaults.stored.clear();
  launch();
  choose("How Does This Work?");
  EXPECT_EQ(platform.alerts.shown, (std::vector{kLinuxTexts.welcome, kLinuxTexts.howItWorks}));
  expectNoForeignWords();
}

TEST_F(LinuxWords, AsksAboutADevice) {
  launch();
  invite({7, "Ann's iPad"}, 3);
  EXPECT_EQ(platform.alerts.shown.back().informativeText,
            "A device named “Ann's iPad” wants to control the presentation on this computer. Pair "
            "it if it's yours — it will connect automatically from then on. You can forget paired "
            "devices from this program's menu.");
  expectNoForeignWords();
}

TEST_F(LinuxWords, TellsOfTheEngineInTheMenu) {
  launch();
  EXPECT_TRUE(isInMenu("Presentation server not running"));
  platform.runEngine();
  platform.time.advance(3);
  EXPECT_TRUE(isInMenu("Presentation server running on port 8484"));
  expectNoForeignWords();
}

TEST_F(LinuxWords, TellsWhyTheEngineEnded) {
  platform.processInfo.logs = "/home/presenter/.local/state/torvane-p2p-helper";
  launch();
  platform.processes.program = [](const ProcessLaunch& launch) {
    return launch.arguments.front() == "--version" ? FakeProgram{"", 0, ""}
                                                   : FakeProgram{"No office.\n", 3, ""};
  };
  choose("Start Server");
  platform.time.advance(1);
  ASSERT_EQ(platform.alerts.shown.size(), 1U);
  EXPECT_TRUE(platform.alerts.shown[0].informativeText.starts_with(
      "The presentation server stopped straight after starting (exit code 3).\n\n"));
  EXPECT_TRUE(platform.alerts.shown[0].informativeText.ends_with(
      "\n\nFull log: /home/presenter/.local/state/torvane-p2p-helper/engine.log"));
  for (const auto& folder : platform.files.folders) {
    EXPECT_EQ(folder.find("Library"), std::string::npos) << folder;
  }
  expectNoForeignWords();
}

TEST_F(LinuxWords, TellsThatTheEngineIsMissing) {
  platform.bundle.resources.clear();
  launch();
  choose("Start Server");
  EXPECT_EQ(platform.alerts.shown.back().informativeText, kLinuxTexts.scriptMissing);
  expectNoForeignWords();
}

TEST_F(LinuxWords, AsksBeforeAnUpdate) {
  platform.bundle.bundlePath = "/Applications/Torvane P2P Helper";
  platform.http.server = [](const HttpRequest&) { return FakeAnswer{httpResult(200, "500")}; };
  platform.alerts.answers = {kAlertFirstButton + 1};
  launch();
  choose("Check for Updates");
  EXPECT_EQ(platform.alerts.shown.back().message, "Update the helper?");
  expectNoForeignWords();
}

TEST_F(LinuxWords, NamesAComputerWithoutAName) {
  platform.processInfo.name.reset();
  launch();
  EXPECT_TRUE(isInMenu("Advertising as “Linux computer” — open the iPad app"));
}

}  // namespace
}  // namespace torvane
