// Start-up and shut-down of the whole program, in order.
// Events: the application has launched, is about to end, "Quit". Ports: all of them, through the
// parts called here.

#include "app/bridge_delegate.h"
#include "app/install_hygiene.h"

namespace torvane {
namespace {

constexpr double kStatusInterval = 3.0;
constexpr double kInkInterval = 0.08;
constexpr double kUpdateInterval = 43200;
constexpr double kFirstUpdateCheckDelay = 5.0;
constexpr double kEngineStartDelay = 1.5;
constexpr double kFullDiskAccessOfferDelay = 2.0;

constexpr const char* kDidShowWelcome = "didShowWelcome";
constexpr const char* kFullDiskAccessOffered = "fdaNudgeShown";

}  // namespace

void BridgeDelegate::applicationDidFinishLaunching() {
  assertMainThread();
  retireOldNamedApp(platform_);
  statusItem = platform_.statusBar.makeStatusItem();
  updateIcon();
  if (statusItem) statusItem->setMenu(*this);
  openLink();
  const bool wasWelcomed = welcomeOnce();
  tccSelfHealIfReplaced(platform_);
  platform_.accessibility.promptForTrust();
  startTimers();
  if (wasWelcomed) offerFullDiskAccessOnce();
}

void BridgeDelegate::openLink() {
  sessions_.open(*this);
  sessions_.startAdvertising(registry_.registeredKeys(), *this);
}

bool BridgeDelegate::welcomeOnce() {
  if (defaultsFlag(kDidShowWelcome)) return true;
  platform_.defaults.setObject(kDidShowWelcome, true);
  platform_.application.activateIgnoringOtherApps();
  runAlert(platform_.texts.welcome);
  return false;
}

void BridgeDelegate::startTimers() {
  main_.every(kStatusInterval, [this] { engine_.checkStatus(); });
  engine_.checkStatus();
  main_.every(kInkInterval, [this] { ink_.inkTick(); });
  main_.after(kFirstUpdateCheckDelay, [this] { updater_.checkForUpdateTick(); });
  main_.every(kUpdateInterval, [this] { updater_.checkForUpdateTick(); });
  // Late enough for the check above to find an engine left over from an earlier run.
  main_.after(kEngineStartDelay, [this] { engine_.startServer(); });
}

void BridgeDelegate::offerFullDiskAccessOnce() {
  if (hasFullDiskAccess(platform_) || defaultsFlag(kFullDiskAccessOffered)) return;
  platform_.defaults.setObject(kFullDiskAccessOffered, true);
  main_.after(kFullDiskAccessOfferDelay, [this] { offerFullDiskAccess(); });
}

void BridgeDelegate::applicationWillTerminate() {
  assertMainThread();
  updater_.abandon();
  sessions_.close();
  registry_.saveAgain();
  engine_.endOwnEngine();
  updater_.awaitEnd();
}

void BridgeDelegate::quit() {
  platform_.application.terminate();
}

}  // namespace torvane
