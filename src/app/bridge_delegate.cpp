// Construction, and what comes from the transport and the parts.

#include "app/bridge_delegate.h"

#include <sodium.h>

#include <cassert>

namespace torvane {
namespace {

std::string computerName(const Platform& platform) {
  return platform.processInfo.hostName().value_or(platform.texts.namelessComputer);
}

Engine::Ports enginePorts(Platform& platform) {
  return {.bundle = platform.bundle,
          .files = platform.files,
          .processes = platform.processes,
          .processInfo = platform.processInfo,
          .backgroundQueue = platform.backgroundQueue,
          .mainQueue = platform.mainQueue,
          .http = platform.http,
          .clock = platform.clock,
          .python = platform.python,
          .texts = platform.texts};
}

Updater::Ports updaterPorts(Platform& platform) {
  return {.application = platform.application,
          .bundle = platform.bundle,
          .files = platform.files,
          .processes = platform.processes,
          .processInfo = platform.processInfo,
          .backgroundQueue = platform.backgroundQueue,
          .mainQueue = platform.mainQueue,
          .http = platform.http,
          .clock = platform.clock,
          .codeCheck = platform.codeCheck,
          .texts = platform.texts};
}

}  // namespace

BridgeDelegate::BridgeDelegate(Platform& platform)
    : platform_(platform),
      main_(platform.mainQueue, lifetime_),
      turns_([this](PeerTurns::Work work) { main_.async(std::move(work)); }),
      registry_(platform.defaults, main_),
      sessions_(platform.peerLink, computerName(platform), admitted_, *this),
      invitations_({platform.application, platform.texts}, registry_, admitted_, *this, *this),
      proxy_(platform.http,
             [this, main = main_] { main.async([this] { ink_.engineDidTakeSomething(); }); }),
      router_({platform.bundle, platform.clock}, admitted_, proxy_),
      engine_(enginePorts(platform), main_, *this, *this),
      overlay_({platform.windowServer, platform.screens, platform.overlaySurfaces}),
      ink_({platform.http, platform.pictures, platform.clock}, main_, overlay_, *this),
      updater_(updaterPorts(platform), main_, *this, *this) {
  const int ready = sodium_init();
  assert(ready >= 0);
  static_cast<void>(ready);
}

void BridgeDelegate::assertMainThread() const {
  assert(platform_.mainQueue.isCurrent());
}

bool BridgeDelegate::defaultsFlag(const char* key) const {
  const auto value = platform_.defaults.object(key);
  return value && countsAsTrue(*value);
}

void BridgeDelegate::sessionPeerDidChange(std::shared_ptr<PeerSession> reporting, PeerID peer,
                                          PeerState state) {
  // Behind what the peer has sent before.
  turns_.async(peer, [this, reporting = std::move(reporting), peer, state] {
    assertMainThread();
    sessions_.peerDidChange(*reporting, peer, state);
  });
}

void BridgeDelegate::sessionDidReceive(std::shared_ptr<PeerSession> reporting, Bytes data,
                                       Asker from) {
  const PeerID peer = from.peer;
  turns_.async(peer, [this, reporting = std::move(reporting), data = std::move(data),
                      from = std::move(from)] {
    assertMainThread();
    if (sessions_.current() == reporting) router_.handleRequest(reporting, data, from);
  });
}

void BridgeDelegate::advertiserDidNotStart(std::string error) {
  main_.async([this, error = std::move(error)] { sessions_.advertisingDidChange(error); });
}

void BridgeDelegate::advertiserDidRecover() {
  main_.async([this] { sessions_.advertisingDidChange(std::nullopt); });
}

void BridgeDelegate::advertiserDidReceiveInvitation(Invitation invitation,
                                                    InvitationHandler handler) {
  main_.async([this, invitation = std::move(invitation), handler = std::move(handler)] {
    assertMainThread();
    invitations_.handleInvitation(invitation, handler);
  });
}

bool BridgeDelegate::isServerRunning() const {
  return engine_.isRunning();
}

std::shared_ptr<PeerSession> BridgeDelegate::currentSession() const {
  return sessions_.current();
}

void BridgeDelegate::serverRunningWasLearnt() {
  updateIcon();
}

void BridgeDelegate::linkDidChange() {
  updateIcon();
}

}  // namespace torvane
