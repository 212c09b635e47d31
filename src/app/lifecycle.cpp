// Start-up and shut-down of the whole program, in order.
// Events: the application has launched, is about to end, "Quit". Ports: all of them, through the
// slices called here.

#include <cassert>

#include "app/bridge_delegate.h"

namespace torvane {
namespace {

constexpr double kStatusInterval = 3.0;
constexpr double kInkInterval = 0.08;
constexpr double kUpdateInterval = 43200;
constexpr double kFirstUpdateCheckDelay = 5.0;
constexpr double kEngineStartDelay = 1.5;
constexpr double kFullDiskAccessOfferDelay = 2.0;
constexpr double kEngineGoodbye = 0.3;

constexpr const char* kDidShowWelcome = "didShowWelcome";
constexpr const char* kFullDiskAccessOffered = "fdaNudgeShown";

}  // namespace

void BridgeDelegate::applicationDidFinishLaunching() {
  assertMainThread();
  retireOldNamedApp();
  statusItem = platform_.statusBar.makeStatusItem();
  updateIcon();
  if (statusItem) statusItem->setMenu(*this);
  openSession();
  startAdvertising();
  const bool wasWelcomed = welcomeOnce();
  tccSelfHealIfReplaced();
  platform_.accessibility.promptForTrust();
  startTimers();
  if (wasWelcomed) offerFullDiskAccessOnce();
}

bool BridgeDelegate::welcomeOnce() {
  if (defaultsFlag(kDidShowWelcome)) return true;
  platform_.defaults.setObject(kDidShowWelcome, true);
  platform_.application.activateIgnoringOtherApps();
  runAlert(platform_.texts.welcome);
  return false;
}

void BridgeDelegate::startTimers() {
  main_.every(kStatusInterval, [this] { pollTick(); });
  checkStatus();
  main_.every(kInkInterval, [this] { inkTick(); });
  main_.after(kFirstUpdateCheckDelay, [this] { checkForUpdate(false); });
  main_.every(kUpdateInterval, [this] { checkForUpdateTick(); });
  // Late enough for the check above to find an engine left over from an earlier run.
  main_.after(kEngineStartDelay, [this] {
    if (!serverRunning) startServer();
  });
}

void BridgeDelegate::offerFullDiskAccessOnce() {
  if (hasFullDiskAccess() || defaultsFlag(kFullDiskAccessOffered)) return;
  platform_.defaults.setObject(kFullDiskAccessOffered, true);
  main_.after(kFullDiskAccessOfferDelay, [this] { offerFullDiskAccess(); });
}

void BridgeDelegate::applicationWillTerminate() {
  assertMainThread();
  assert(advertiser && session);  // made at launch, never given up
  abandonUpdate();
  advertiser->stop();
  session->disconnect();
  savePairingsAgain();
  endOwnEngine();
  awaitUpdate();
}

void BridgeDelegate::endOwnEngine() {
  if (!child) return;
  stoppingServer = true;
  postShutdown();
  child->terminate();
  platform_.mainQueue.block(kEngineGoodbye);
}

void BridgeDelegate::quit() {
  platform_.application.terminate();
}

}  // namespace torvane
