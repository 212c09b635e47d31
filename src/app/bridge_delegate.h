#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "app/main_hop.h"
#include "app/status_menu.h"
#include "bridge/engine_request.h"
#include "engine/engine_log.h"
#include "ink/ink_answer.h"
#include "ink/newest_picture.h"
#include "ink/overlay_surface.h"
#include "ink/overlay_view.h"
#include "peer/peer_session.h"
#include "peer/peer_turns.h"
#include "peer/registered_keys.h"
#include "platform/platform.h"
#include "protocol/device_key.h"
#include "protocol/received_ids.h"
#include "protocol/token_bucket.h"
#include "update/apply_update.h"

namespace torvane {

// The program: all of its state for the life of the process, and what happens on each event.
//
// Every field is touched on the main thread only. The calls of PeerSessionDelegate and
// AdvertiserDelegate come from other threads and hop to the main queue first; completions of
// requests and exits of processes do the same. This header is the table of contents: each group
// below names the file that defines its methods.
class BridgeDelegate final : public MenuDelegate,
                             public PeerSessionDelegate,
                             public AdvertiserDelegate {
 public:
  // app/bridge_delegate.cpp
  // `platform` outlives the delegate.
  explicit BridgeDelegate(Platform& platform);
  ~BridgeDelegate() override;
  BridgeDelegate(const BridgeDelegate&) = delete;
  BridgeDelegate& operator=(const BridgeDelegate&) = delete;

  // app/lifecycle.cpp
  void applicationDidFinishLaunching();
  void applicationWillTerminate();
  void endOwnEngine();
  void quit();
  [[nodiscard]] bool welcomeOnce();  // whether an earlier launch had shown the welcome
  void startTimers();
  void offerFullDiskAccessOnce();

  // app/status_icon.cpp
  std::unique_ptr<StatusItem> statusItem;
  void updateIcon();

  // app/status_menu.cpp
  std::vector<MenuItem> menuNeedsUpdate() override;
  [[nodiscard]] StatusMenuInputs statusMenuInputs() const;

  // app/dialogs.cpp
  // Every alert runs through here, and keeps off the projector where it can.
  int runAlert(AlertContent content);
  // An alert under the program's name with one button; does not bring the program to the front.
  void alert(const std::string& text);
  void showHowItWorks();
  void offerFullDiskAccess();
  void toggleLaunchAtLogin();

  // app/install_hygiene.cpp
  void retireOldNamedApp();
  void tccSelfHealIfReplaced();
  [[nodiscard]] bool hasFullDiskAccess() const;
  [[nodiscard]] std::optional<std::string> bundleIdentifier() const;

  // protocol/pairing_registry.cpp
  static constexpr const char* pairedKey = "pairedDeviceKeys";  // of the user defaults
  std::map<std::string, std::string> pairedDevices;             // device key → device name
  std::map<PeerID, std::string> peerKeys;                       // → device key
  std::map<PeerID, std::string> challenges;                     // → challenge issued
  std::map<PeerID, ReceivedIDs> receivedIDs;                    // → ids of accepted requests
  std::map<PeerID, TokenBucket> failedVerifications;            // → what it may still try
  // The keys of pairedDevices as other threads may read them: each change is made to both.
  const std::shared_ptr<RegisteredKeys> registeredKeys = std::make_shared<RegisteredKeys>();
  [[nodiscard]] bool isPaired(const std::string& deviceKey) const;
  bool savesAgain = false;  // a change is not on disk yet, and will be tried again
  // False: it holds, but could not be saved.
  bool pair(const std::string& deviceKey, const std::string& name);
  bool forgetAllPairings();
  bool retryUnless(bool saved);  // gives back what it is given
  void savePairingsAgain();
  void admitPeer(const PeerID& peer, const std::string& deviceKey);
  void dropPeer(const PeerID& peer);

  // peer/session.cpp
  PeerID peerID;
  std::shared_ptr<PeerSession> session;
  std::unique_ptr<Advertiser> advertiser;
  std::vector<std::string> connectedPeers;  // display names, in the session's order
  std::optional<std::string> advertiseError;
  void openSession();
  void startAdvertising();
  void sessionPeerDidChange(std::shared_ptr<PeerSession> reporting, PeerID peer,
                            PeerState state) override;
  void advertiserDidNotStart(std::string error) override;
  void advertiserDidRecover() override;
  void peerDidChange(PeerSession& reporting, const PeerID& peer, PeerState state);

  // peer/invitations.cpp
  using InvitationReply = std::function<void(bool accept, std::shared_ptr<PeerSession> session)>;
  std::map<std::string, std::string> inviteNames;   // device key → display name
  std::map<std::string, std::string> inviteDigits;  // device key → its first invitation's digits
  std::set<std::string> ignoredDevices;             // device keys
  std::set<std::string> warnedLegacyClients;        // display names
  std::map<std::string, std::vector<InvitationReply>> pendingInvites;  // by device key
  bool pairingAlertUp = false;
  void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) override;
  void handleInvitation(const Invitation& invitation, const InvitationHandler& handler);
  void presentNextPairingAlert();
  [[nodiscard]] std::string withInviteDigits(const std::string& deviceKey,
                                             const std::string& name) const;
  void answerInvitations(const std::string& deviceKey, const std::string& name, bool accept);
  void warnLegacyClient(const std::string& name);
  void warnNotSaved(const std::string& text);
  void forgetPairedDevices();

  // bridge/request_dispatch.cpp
  void sessionDidReceive(std::shared_ptr<PeerSession> reporting, Bytes data, Asker from) override;
  void handleRequest(ByteView data, const Asker& from);
  void handleSignedRequest(const P2PFrame::View& envelope, const Asker& from,
                           const SigningPublicKey& key);

  // bridge/handshake_routes.cpp
  void answerChallenge(std::int64_t id, const Asker& from);
  void answerBridgeInfo(std::int64_t id, const Asker& from);

  // bridge/engine_proxy.cpp
  std::unique_ptr<HttpSession> http;  // made at the first forwarded request
  void forwardToEngine(PeerRequest request, const Asker& from);

  // engine/engine_process.cpp
  std::shared_ptr<ChildProcess> child;  // the engine this helper started, while it is alive
  bool stoppingServer = false;
  [[nodiscard]] std::optional<std::string> serverScriptPath() const;
  void startServer();
  void launchEngine(const std::string& script);
  void engineDidExit(const std::shared_ptr<ChildProcess>& process, int status, double launchedAt,
                     std::uint64_t logOffset);
  void stopServer();
  void postShutdown();

  // engine/status_polling.cpp
  bool serverRunning = false;
  void checkStatus();
  void pollTick();

  // ink/ink_polling.cpp
  OverlayView overlayView;
  std::int64_t inkSeq = 0;         // the number of the last event that arrived
  bool inkBusy = false;            // an answer is on its way
  std::int64_t lastOverlayV = -1;  // version of the picture shown or on its way
  void inkTick();
  [[nodiscard]] std::optional<InkAnswer> quietAnswer() const;
  void inkDidArrive(const std::shared_ptr<const InkAnswer>& answer);
  void takeInk(const std::shared_ptr<const InkAnswer>& answer, std::size_t from);
  void applyInkEvents(std::span<const InkEvent> events);
  NewestPicture newestPicture;
  void fetchOverlayImage(std::int64_t version);
  void decodePicture(std::optional<Bytes> file);
  void pictureWasDecoded(std::shared_ptr<const Picture> picture);
  void clearOverlay();

  // ink/overlay_window.cpp
  std::unique_ptr<OverlaySurface> overlay;  // made at the first need, then hidden and shown
  std::int64_t frameTick = 0;               // answers while presenting, over all shows
  void updateOverlayWindow(bool presenting);
  void showOverlay(const Rect& frame);
  [[nodiscard]] std::optional<Rect> slideShowScreenFrame();
  [[nodiscard]] std::optional<Rect> screenBesideSlideShow();

  // update/update_check.cpp
  static const char* const updateBase;  // the update site, without a trailing slash
  std::optional<std::string> availableUpdate;
  [[nodiscard]] std::string myVersion() const;
  [[nodiscard]] bool isInstalledCopy() const;
  [[nodiscard]] std::string updateURL(const std::string& file) const;
  void checkForUpdate(bool manual);
  void updateCheckDidEnd(bool manual, const std::string& current,
                         const std::optional<std::string>& latest);
  void checkForUpdateTick();
  void checkForUpdatesClicked();

  // update/update_install.cpp
  static constexpr const char* teamID = "ZQ4W8N2HJT";  // who signs our updates
  bool updateInProgress = false;
  std::weak_ptr<UpdateAttempt> updateAttempt;  // kept by what works on it
  void installUpdate();
  [[nodiscard]] UpdatePlan updatePlan() const;
  void prepareDownload(const std::string& build);
  void downloadUpdate(const std::shared_ptr<UpdateAttempt>& attempt, const UpdatePlan& plan,
                      const std::string& build);
  void updateFailed(const std::string& reason);
  void restart(const UpdatePlan& plan);
  void abandonUpdate();
  void awaitUpdate();

 private:
  // app/bridge_delegate.cpp
  // In debug builds, ends the process when called on another thread.
  void assertMainThread() const;
  [[nodiscard]] bool defaultsFlag(const char* key) const;

  Platform& platform_;
  EngineLog engineLog_;
  std::shared_ptr<const int> lifetime_ = std::make_shared<const int>(0);
  MainHop main_;
  PeerTurns turns_;
};

}  // namespace torvane
