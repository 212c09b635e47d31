#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/status_menu.h"
#include "bridge/engine_proxy.h"
#include "bridge/request_router.h"
#include "engine/engine.h"
#include "ink/ink_feed.h"
#include "ink/overlay_controller.h"
#include "peer/admitted_peers.h"
#include "peer/invitations.h"
#include "peer/pairing_registry.h"
#include "peer/peer_sessions.h"
#include "peer/peer_turns.h"
#include "ports/main_hop.h"
#include "ports/platform.h"
#include "update/updater.h"

namespace torvane {

// The program: the one object that the platform talks to. It owns the parts that hold the state,
// takes what comes from other threads to the main queue, and gives launch and quit their order.
//
// The calls of PeerSessionDelegate and AdvertiserDelegate come from any thread; everything else is
// for the main thread only. This header is the table of contents: each group below names the file
// that defines its methods.
class BridgeDelegate final : public MenuDelegate,
                             public PeerSessionDelegate,
                             public AdvertiserDelegate,
                             private UserDialogs,
                             private Engine::Host,
                             private InkFeed::Host,
                             private Invitations::Host,
                             private PeerSessions::Host,
                             private Updater::Host {
 public:
  // app/bridge_delegate.cpp
  // `platform` outlives the delegate.
  explicit BridgeDelegate(Platform& platform);
  ~BridgeDelegate() override = default;
  BridgeDelegate(const BridgeDelegate&) = delete;
  BridgeDelegate& operator=(const BridgeDelegate&) = delete;

  // app/lifecycle.cpp
  void applicationDidFinishLaunching();
  void openLink();  // the first of its steps that lets peers in; enough for those who need no more
  void applicationWillTerminate();
  void quit() override;

  // app/status_menu.cpp
  std::vector<MenuItem> menuNeedsUpdate() override;

  // app/bridge_delegate.cpp
  void sessionPeerDidChange(std::shared_ptr<PeerSession> reporting, PeerID peer,
                            PeerState state) override;
  void sessionDidReceive(std::shared_ptr<PeerSession> reporting, Bytes data, Asker from) override;
  void advertiserDidNotStart(std::string error) override;
  void advertiserDidRecover() override;
  void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) override;

 private:
  // app/bridge_delegate.cpp
  // In debug builds, ends the process when called on another thread.
  void assertMainThread() const;
  [[nodiscard]] bool defaultsFlag(const char* key) const;
  [[nodiscard]] bool isServerRunning() const override;
  [[nodiscard]] std::shared_ptr<PeerSession> currentSession() const override;
  void serverRunningWasLearnt() override;
  void linkDidChange() override;

  // app/lifecycle.cpp
  [[nodiscard]] bool welcomeOnce();  // whether an earlier launch had shown the welcome
  void startTimers();
  void offerFullDiskAccessOnce();

  // app/status_icon.cpp
  void updateIcon();

  // app/status_menu.cpp
  [[nodiscard]] StatusMenuInputs statusMenuInputs() const;

  // app/dialogs.cpp
  int runAlert(AlertContent content) override;
  void alert(const std::string& text) override;
  void showHowItWorks();
  void offerFullDiskAccess();
  void toggleLaunchAtLogin();

  Platform& platform_;
  const std::shared_ptr<const int> lifetime_ = std::make_shared<const int>(0);
  const MainHop main_;
  PeerTurns turns_;

  std::unique_ptr<StatusItem> statusItem;
  PairingRegistry registry_;
  AdmittedPeers admitted_;
  PeerSessions sessions_;
  Invitations invitations_;
  EngineProxy proxy_;
  RequestRouter router_;
  Engine engine_;
  OverlayController overlay_;
  InkFeed ink_;
  Updater updater_;
};

}  // namespace torvane
