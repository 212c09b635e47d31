// Messages to the user that belong to no other slice, and the one preference.
// Events: "How Does This Work?", "Stop File-Access Prompts…" and its offer after launch, "Launch
// at Login". Ports: Alerts, Application, Workspace, LoginItem.

#include "app/bridge_delegate.h"

namespace torvane {
namespace {

const AlertContent kHowItWorks = {
    .message = "How Torvane works",
    .informativeText =
        "This menu bar app is the Mac half of Torvane. It does two jobs:\n\n"
        "•  It runs a small local server that drives Microsoft PowerPoint — changing slides, "
        "exporting slide pictures, and reading your speaker notes.\n\n"
        "•  It announces itself to nearby iPads the same way AirDrop does (Bluetooth and direct "
        "Wi\u2011Fi), so the iPad app finds this Mac by itself — no shared network, no cables, no "
        "addresses to type.\n\n"
        "On the iPad you see the current slide, your notes, and a tappable grid of every slide "
        "for jumping around. A drag with the laser tool shows as a red dot on the projector, and "
        "anything you draw with the Apple Pencil appears live over the presentation — and can be "
        "exported afterwards as an annotated PDF.\n\n"
        "The first time a new iPad connects, this Mac asks you to approve it, so nobody else in "
        "the room can take over your presentation. Everything stays between your devices; "
        "nothing goes through the internet.\n\n"
        "Tip: tap the ? button at the top of the iPad app for a guide to every control."};

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

void BridgeDelegate::alert(const std::string& text) {
  assertMainThread();
  platform_.alerts.runModal({.message = "Torvane P2P Helper", .informativeText = text});
}

void BridgeDelegate::showHowItWorks() {
  assertMainThread();
  platform_.application.activateIgnoringOtherApps();
  platform_.alerts.runModal(kHowItWorks);
}

void BridgeDelegate::offerFullDiskAccess() {
  assertMainThread();
  platform_.application.activateIgnoringOtherApps();
  if (platform_.alerts.runModal(kFullDiskAccessOffer) != kAlertFirstButton) return;
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
