// The menu as the system gets it, item by item.

#include "app/status_menu.h"
#include "mac/mac_program.h"
#include "platform/mac/mac_status_item.h"

namespace torvane {
namespace {

using Lines = std::vector<std::string>;

std::string line(bool isSeparator, const std::string& title, bool isEnabled, long indentation,
                 bool isChecked) {
  if (isSeparator) return "separator";
  return std::to_string(indentation) + (isEnabled ? " enabled " : " disabled ") +
         (isChecked ? "checked " : "unchecked ") + title;
}

Lines shownLines() {
  NSMenu* menu = system().statusItem.menu;
  [menu.delegate menuNeedsUpdate:menu];
  Lines lines;
  for (NSMenuItem* item : system().items) {
    lines.push_back(line(fake::isSeparator(item), fake::title(item), item.enabled,
                         item.indentationLevel, item.state == NSControlStateValueOn));
  }
  return lines;
}

// What the core wants to be shown.
struct CoreMenu final : MenuDelegate {
  StatusMenuInputs inputs;
  std::string chosen;

  std::function<void()> choosing(const char* what) {
    return [this, what] { chosen = what; };
  }
  std::vector<MenuItem> menuNeedsUpdate() override {
    return statusMenu(kMacTexts, inputs,
                      {.startServer = choosing("start"),
                       .stopServer = choosing("stop"),
                       .forgetPairedDevices = choosing("forget"),
                       .installUpdate = choosing("install"),
                       .checkForUpdatesClicked = choosing("check"),
                       .offerFullDiskAccess = choosing("offer"),
                       .showHowItWorks = choosing("show"),
                       .toggleLaunchAtLogin = choosing("toggle"),
                       .quit = choosing("quit")});
  }
  Lines lines() {
    Lines lines;
    for (const MenuItem& item : menuNeedsUpdate()) {
      lines.push_back(line(item.isSeparator, item.title, item.action != nullptr,
                           item.indentationLevel, item.isChecked));
    }
    return lines;
  }
};

class MacMenu : public MacProgram {
 protected:
  // Few of everything, much of everything, and an error.
  static std::vector<StatusMenuInputs> allKinds() {
    StatusMenuInputs little, much, wrong;
    little.displayName = "Zoë's Mac";
    little.isInstalledCopy = true;
    little.hasFullDiskAccess = true;
    much.connectedPeers = {"A & B_1", "-", "Zoë's iPad"};
    much.serverRunning = true;
    much.pairedNames = {"Zoë's iPad", "A & B_1"};
    much.availableUpdate = "500";
    much.launchesAtLogin = true;
    wrong = much;
    wrong.advertiseError = "No radio.";
    wrong.updateInProgress = true;
    return {little, much, wrong};
  }
};

TEST_F(MacMenu, IsTheCoresItemByItem) {
  CoreMenu core;
  MacStatusItem item;
  item.setMenu(core);
  for (const StatusMenuInputs& inputs : allKinds()) {
    core.inputs = inputs;
    EXPECT_EQ(shownLines(), core.lines());
  }
  EXPECT_FALSE(system().statusItem.menu.autoenablesItems);
}

TEST_F(MacMenu, DoesWhatTheCoreSaysForEachItem) {
  CoreMenu core;
  MacStatusItem item;
  item.setMenu(core);
  core.inputs = allKinds()[1];
  static_cast<void>(shownLines());
  Lines chosen;
  for (NSMenuItem* each : system().items) {
    if (!each.enabled || fake::isSeparator(each)) continue;
    fake::choose(each);
    chosen.push_back(core.chosen);
  }
  EXPECT_EQ(chosen, (Lines{"stop", "forget", "install", "offer", "show", "toggle", "quit"}));
}

TEST_F(MacMenu, OfTheProgramShowsItsState) {
  system().defaults["pairedDeviceKeys"] = @{@"key" : @"Zoë's iPad"};
  system().loginStatus = SMAppServiceStatusEnabled;
  run([&] {
    change(pad(), MCSessionStateConnected);
    EXPECT_EQ(
        shownLines(),
        (Lines{"0 disabled unchecked Connected:", "1 disabled unchecked Zoë's iPad", "separator",
               "0 disabled unchecked PowerPoint server not running",
               "0 enabled unchecked Start Server", "separator",
               "0 disabled unchecked Paired devices:", "1 disabled unchecked Zoë's iPad",
               "0 enabled unchecked Forget Paired Devices…", "separator",
               "0 enabled unchecked Check for Updates", "0 enabled unchecked How Does This Work?",
               "0 enabled checked Launch at Login", "0 enabled unchecked Quit"}));
  });
}

}  // namespace
}  // namespace torvane
