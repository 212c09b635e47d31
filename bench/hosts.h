#pragma once

#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "app/bridge_delegate.h"
#include "engine/python_diagnosis.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_ink.h"
#include "platform/linux/curl_http_session.h"
#include "platform/linux/peer_link.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/system_clock.h"
#include "platform/posix/posix_child_process.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/thread_background_queue.h"
#include "protocol/base64.h"
#include "support/temporary_folder.h"

namespace torvane::bench {

// A peer link of its own on a free port, with its files in a temporary folder.
class PrivateLink {
 public:
  PrivateLink() : link_(std::in_place, privateOptions()) {}

  [[nodiscard]] PeerLink& operator*() { return *link_; }

  // Waits until it listens. Not on the main thread.
  [[nodiscard]] std::uint16_t port() { return port_.get(); }

  // To be called before what it reports to goes.
  void end() { link_.reset(); }

 private:
  PeerLinkOptions privateOptions() {
    PeerLinkOptions options;
    options.preferredPort = 0;
    options.dataFolder = folder_.path();
    options.isPublished = false;
    options.didListen = [this](const LinkAddress& address) { listening_.set_value(address.port); };
    return options;
  }

  TemporaryFolder folder_;
  std::promise<std::uint16_t> listening_;
  std::shared_future<std::uint16_t> port_ = listening_.get_future().share();
  std::optional<WebSocketPeerLink> link_;
};

// The program's core between the real adapters. It lets peers in and forwards their requests; its
// timers do not run, which would ask the engine and the network for things of their own. Made and
// destroyed on the main thread.
class BridgeHost {
 public:
  BridgeHost() : delegate_(ports_) { delegate_.openLink(); }
  ~BridgeHost() { link_.end(); }
  BridgeHost(const BridgeHost&) = delete;
  BridgeHost& operator=(const BridgeHost&) = delete;

  [[nodiscard]] std::uint16_t port() { return link_.port(); }

 private:
  SimulatedTime time_;  // for the fakes only
  CallLog log_;
  FakeApplication application_{log_};
  FakeStatusBar statusBar_{log_};
  FakeAlerts alerts_{time_, log_};  // "Pair", at once
  FakeUserDefaults defaults_{log_};
  FakeBundle bundle_;
  FakeProcessInfo processInfo_;
  FakeAccessibility accessibility_{log_};
  FakePrivacyDatabase privacyDatabase_;
  FakeRunningApplications runningApplications_{log_};
  FakeWorkspace workspace_{log_};
  FakeLoginItem loginItem_;
  FakeWindowServer windowServer_;
  FakeScreens screens_;
  FakeOverlaySurfaces overlaySurfaces_;
  FakePictureDecoder pictures_{time_};
  FakeCodeCheck codeCheck_;

  QtMainQueue mainQueue_;
  ThreadBackgroundQueue backgroundQueue_;
  SystemClock clock_;
  CurlHttpSessions http_;
  PosixFileSystem files_;
  PosixProcessLauncher processes_;
  PrivateLink link_;

  Platform ports_{application_,   statusBar_,       alerts_,
                  mainQueue_,     backgroundQueue_, clock_,
                  defaults_,      bundle_,          processInfo_,
                  accessibility_, privacyDatabase_, runningApplications_,
                  workspace_,     loginItem_,       http_,
                  *link_,         files_,           processes_,
                  windowServer_,  screens_,         overlaySurfaces_,
                  pictures_,      codeCheck_,       kLinuxPython,
                  kLinuxTexts};
  BridgeDelegate delegate_;
};

// A peer link that lets everyone in and sends every message back: straight from the link's
// thread, or by way of the main queue.
class EchoHost final : public PeerSessionDelegate, public AdvertiserDelegate {
 public:
  enum class Way { straight, mainQueue };

  explicit EchoHost(Way way) : way_(way) {
    const PeerID self = (*link_).makePeerID("Echo");
    session_ = (*link_).makeSession(self, *this);
    advertiser_ = (*link_).makeAdvertiser(self, "torvane", registered_, *this);
    advertiser_->start();
  }
  ~EchoHost() override { link_.end(); }
  EchoHost(const EchoHost&) = delete;
  EchoHost& operator=(const EchoHost&) = delete;

  [[nodiscard]] std::uint16_t port() { return link_.port(); }

  void sessionPeerDidChange(std::shared_ptr<PeerSession>, PeerID, PeerState) override {}
  void sessionDidReceive(std::shared_ptr<PeerSession> session, Bytes data, Asker from) override {
    if (way_ == Way::straight) return session->sendReliably(std::move(data), from);
    mainQueue_.async(
        [session = std::move(session), data = std::move(data), from = std::move(from)]() mutable {
          session->sendReliably(std::move(data), from);
        });
  }
  void advertiserDidNotStart(std::string) override {}
  void advertiserDidRecover() override {}
  void advertiserDidReceiveInvitation(Invitation invitation, InvitationHandler handler) override {
    registered_->insert(base64Encode(invitation.context.value_or(Bytes{})));
    handler(true, session_);
  }

 private:
  const Way way_;
  QtMainQueue mainQueue_;
  PrivateLink link_;
  const std::shared_ptr<RegisteredKeys> registered_ = std::make_shared<RegisteredKeys>();
  std::shared_ptr<PeerSession> session_;
  std::unique_ptr<Advertiser> advertiser_;
};

}  // namespace torvane::bench
