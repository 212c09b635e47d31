// Messages to the user that belong to no other slice, and the one preference.
// Events: "How Does This Work?", "Stop File-Access Prompts…" and its offer after launch, "Launch
// at Login". Ports: Alerts, Application, Workspace, LoginItem.

#include "app/bridge_delegate.h"

namespace torvane {
namespace {

// Only where the desktop has a store of privacy permissions.
const AlertContent kFullDiskAccessOffer = {
    .message = "Stop the file-access prompts",
    .informativeText =
        "macOS asks permission each time this helper reads the slide previews PowerPoint exports, "
        "and again when it saves annotated PDFs to Downloads. Granting Full Disk Access once stops "
        "all of those prompts.\n\n"
        "In System Settings › Privacy & Security › Full Disk Access, click +, choose “Torvane P2P "
        "Helper” in Applications, and turn it on. If macOS then offers to relaunch the helper, let "
        "it.",
    .buttons = {"Open System Settings", "Later"}};

constexpr const char* kFullDiskAccessSettings =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";

}  // namespace

int BridgeDelegate::runAlert(AlertContent content) {
  assertMainThread();
  content.screen = overlay_.screenBesideSlideShow();
  return platform_.alerts.runModal(content);
}

void BridgeDelegate::alert(const std::string& text) {
  assertMainThread();
  runAlert({.message = "Torvane P2P Helper", .informativeText = text});
}

void BridgeDelegate::showHowItWorks() {
  assertMainThread();
  platform_.application.activateIgnoringOtherApps();
  runAlert(platform_.texts.howItWorks);
}

void BridgeDelegate::offerFullDiskAccess() {
  assertMainThread();
  platform_.application.activateIgnoringOtherApps();
  if (runAlert(kFullDiskAccessOffer) != kAlertFirstButton) return;
  platform_.workspace.openURL(kFullDiskAccessSettings);
}

void BridgeDelegate::toggleLaunchAtLogin() {
  assertMainThread();
  LoginItem& item = platform_.loginItem;
  const bool isEnabled = item.status() == LoginItemStatus::enabled;
  const auto error = isEnabled ? item.unregisterItem() : item.registerItem();
  if (error) alert("Couldn't change Launch at Login: " + *error);
}

}  // namespace torvane
